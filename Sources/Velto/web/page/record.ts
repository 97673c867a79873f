// Where the browser keeps the record: one entry of a database, with the bytes of profile.json.

interface Entry {
  readonly bytes: Uint8Array;
  readonly version: string; // changes with each save of any page
}

const file = "profile.json";
// Milliseconds until a browser that does not answer counts as one that stores nothing.
const patience = 3000;

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
  private watch: number | undefined; // until the latest save has ended
  private isStuck = false;

  // `kept` is called when the latest save is on the disk, `conflict` with what another page has
  // saved meanwhile: save the two merged. `failed` says why nothing is stored; `kept` may still
  // follow if that only takes long. Stored bytes for which `isRecord` is false are put aside before
  // a save replaces them.
  constructor(private readonly on: {
    isRecord(bytes: Uint8Array): boolean;
    kept(): void;
    conflict(other: Uint8Array): void;
    failed(reason: string): void;
  }) {}

  // The record; empty if there is none, or if the browser has no storage for this page.
  async load(): Promise<Uint8Array> {
    const slow = new Promise<never>((_resolve, reject) =>
      setTimeout(() => reject("the browser's storage does not answer"), patience));
    try {
      const reading = this.store().then((store) => done(store.get(file)));
      const entry = await Promise.race([reading, slow]) as Entry | undefined;
      if (entry !== undefined && this.on.isRecord(entry.bytes)) {
        this.version = entry.version;
        return entry.bytes;
      }
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
    clearTimeout(this.watch);
    this.watch = setTimeout(() => {
      this.isStuck = true;
      this.on.failed("the browser's storage does not answer");
    }, this.isStuck ? 0 : patience);
  }

  private async store(): Promise<IDBObjectStore> {
    this.database ??= await this.open();
    // TypeScript 4.8 does not know the third argument: complete means on the disk.
    const transaction = (this.database.transaction as (
      names: string[], mode: IDBTransactionMode, options: { durability: string },
    ) => IDBTransaction).call(this.database, ["files"], "readwrite", { durability: "strict" });
    return transaction.objectStore("files");
  }

  private async open(): Promise<IDBDatabase> {
    const opening = indexedDB.open("velto", 1);
    opening.onupgradeneeded = () => opening.result.createObjectStore("files");
    const database = await done(opening);
    // Browsers end connections when they delete or lose what is stored.
    database.onclose = database.onversionchange = () => this.close();
    return database;
  }

  // The next save opens the database anew.
  private close(): void {
    this.database?.close();
    this.database = undefined;
  }

  private end(tell: () => void): void {
    this.isStuck = false;
    if (this.next !== undefined) return; // a later save is told
    clearTimeout(this.watch);
    tell();
  }

  private async write(): Promise<void> {
    const bytes = this.next!;
    this.next = undefined;
    try {
      const store = await this.store();
      const entry = await done(store.get(file)) as Entry | undefined;
      if (entry !== undefined && entry.version !== this.version) {
        if (this.on.isRecord(entry.bytes)) {
          this.version = entry.version;
          this.on.conflict(entry.bytes);
          return;
        }
        store.put(entry, `${file}.aside-${new Date().toISOString()}`);
      }
      const version = String(crypto.getRandomValues(new Uint32Array(2)));
      store.put({ bytes, version }, file);
      // Both or neither.
      await new Promise<void>((resolve, reject) => {
        store.transaction.oncomplete = () => resolve();
        store.transaction.onabort = () => reject(store.transaction.error);
      });
      this.version = version;
      this.end(() => this.on.kept());
    } catch (error) {
      this.close();
      this.end(() => this.on.failed(String(error)));
    }
  }
}
