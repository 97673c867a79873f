// Where the browser keeps the record: one entry of a database, with the bytes of profile.json.

interface Entry {
  readonly bytes: Uint8Array;
  readonly version: string; // changes with each save of any page
}

const file = "profile.json";

function done<T>(request: IDBRequest<T>): Promise<T> {
  return new Promise((resolve, reject) => {
    request.onsuccess = () => resolve(request.result);
    request.onerror = () => reject(request.error);
  });
}

export class RecordFile {
  private database: IDBDatabase | undefined;
  private version = ""; // of what this page has read or saved last
  private work: Promise<void> = Promise.resolve();
  private next: Uint8Array | undefined;

  // `kept` is called when the latest save is on the disk, `conflict` with what another page has
  // saved meanwhile: save the two merged. `failed` says why nothing is stored.
  constructor(private readonly on: {
    kept(): void;
    conflict(other: Uint8Array): void;
    failed(reason: string): void;
  }) {}

  // The record; empty if there is none, or if the browser has no storage for this page. Bytes for
  // which `isRecord` is false are put aside, so that nothing overwrites them.
  async load(isRecord: (bytes: Uint8Array) => boolean): Promise<Uint8Array> {
    try {
      const opening = indexedDB.open("velto", 1);
      opening.onupgradeneeded = () => opening.result.createObjectStore("files");
      this.database = await done(opening);
      const store = this.store();
      const entry = await done(store.get(file)) as Entry | undefined;
      if (entry === undefined) return new Uint8Array();
      this.version = entry.version;
      if (isRecord(entry.bytes)) return entry.bytes;
      await done(store.put(entry, `${file}.aside-${new Date().toISOString()}`));
    } catch (error) {
      this.on.failed(String(error));
    }
    return new Uint8Array();
  }

  // Saves `bytes`. Of several saves that wait, the latest counts.
  save(bytes: Uint8Array): void {
    const waits = this.next !== undefined;
    this.next = bytes;
    if (!waits) this.work = this.work.then(() => this.write());
  }

  private store(): IDBObjectStore {
    // TypeScript 4.8 does not know the third argument: complete means on the disk.
    const transaction = (this.database!.transaction as (
      names: string[], mode: IDBTransactionMode, options: { durability: string },
    ) => IDBTransaction).call(this.database, ["files"], "readwrite", { durability: "strict" });
    return transaction.objectStore("files");
  }

  private async write(): Promise<void> {
    const bytes = this.next!;
    this.next = undefined;
    if (this.database === undefined) return;
    try {
      const store = this.store();
      const complete = new Promise<void>((resolve, reject) => {
        store.transaction.oncomplete = () => resolve();
        store.transaction.onabort = () => reject(store.transaction.error);
      });
      const entry = await done(store.get(file)) as Entry | undefined;
      if (entry !== undefined && entry.version !== this.version) {
        this.version = entry.version;
        this.on.conflict(entry.bytes);
        return;
      }
      const version = String(crypto.getRandomValues(new Uint32Array(2)));
      await done(store.put({ bytes, version }, file));
      await complete;
      this.version = version;
      if (this.next === undefined) this.on.kept();
    } catch (error) {
      this.on.failed(String(error));
    }
  }
}
