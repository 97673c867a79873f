// The service worker: keeps the files of the page, so that it opens without a network.
//
// A version is kept whole, and only if each file has the digest that the build noted: a host that is
// being updated cannot leave a mixture. A new version answers as soon as it is kept; a page that runs
// stays with the files of its own, whose folder has the version's name. The browser looks for a new
// version whenever the page starts.

// The build puts these two before the script.
declare const pageVersion: string;
declare const pageDigests: Readonly<Record<string, string>>; // SHA-256 in hex by name

{
  // TypeScript knows the page's global scope, not a service worker's.
  interface Extendable {
    waitUntil(work: Promise<unknown>): void;
  }
  interface Fetching extends Extendable {
    readonly request: Request;
    respondWith(response: Promise<Response>): void;
  }
  const worker = self as unknown as {
    readonly registration: { readonly scope: string };
    readonly clients: {
      matchAll(options: { includeUncontrolled: boolean; type: "window" }):
      Promise<readonly { readonly url: string }[]>;
    };
    skipWaiting(): Promise<void>;
    addEventListener(type: "install" | "activate", listener: (event: Extendable) => void): void;
    addEventListener(type: "fetch", listener: (event: Fetching) => void): void;
  };
  // Copies of the page in other folders of the host have caches of their own.
  const { scope } = worker.registration;
  const mine = `velto ${scope} `;
  const name = mine + pageVersion;

  const keep = async (): Promise<void> => {
    const cache = await caches.open(name);
    await Promise.all(Object.entries(pageDigests).map(async ([file, digest]) => {
      const response = await fetch(file, { cache: "no-cache" });
      const bytes = await response.arrayBuffer();
      const found = [...new Uint8Array(await crypto.subtle.digest("SHA-256", bytes))]
        .map((byte) => byte.toString(16).padStart(2, "0")).join("");
      if (!response.ok || found !== digest) throw new Error(`${file} is not of version ${pageVersion}.`);
      const type = response.headers.get("Content-Type") ?? "application/octet-stream";
      await cache.put(file, new Response(bytes, { headers: { "Content-Type": type } }));
    }));
  };

  // Pages of former versions may need theirs.
  const dropFormer = async (): Promise<void> => {
    const pages = await worker.clients.matchAll({ includeUncontrolled: true, type: "window" });
    if (pages.some(({ url }) => url.startsWith(scope))) return;
    for (const former of await caches.keys())
      if (former.startsWith(mine) && former !== name) await caches.delete(former);
  };

  const answer = async (request: Request): Promise<Response> => {
    const path = new URL(request.url).pathname.slice(new URL(scope).pathname.length);
    const cache = await caches.open(name);
    const kept = path === "" ? await cache.match("index.html")
      : await cache.match(request, { ignoreSearch: true })
        ?? await caches.match(request, { ignoreSearch: true });
    return kept ?? fetch(request);
  };

  worker.addEventListener("install", (event) =>
    event.waitUntil(keep().then(() => worker.skipWaiting(), async (error) => {
      await caches.delete(name);
      throw error;
    })));
  worker.addEventListener("activate", (event) => event.waitUntil(dropFormer()));
  worker.addEventListener("fetch", (event) => {
    const { request } = event;
    if (request.method !== "GET" || !request.url.startsWith(scope)) return;
    if (request.mode === "navigate") event.waitUntil(dropFormer());
    event.respondWith(answer(request));
  });
}
