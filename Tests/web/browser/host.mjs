// Serves the page.
import { createHash } from "node:crypto";
import { existsSync, readFileSync } from "node:fs";
import { createServer } from "node:http";
import { basename, extname, join, normalize } from "node:path";

const types = { ".html": "text/html", ".js": "text/javascript", ".json": "application/json",
  ".css": "text/css", ".wasm": "application/wasm", ".svg": "image/svg+xml", ".png": "image/png",
  ".woff": "font/woff" };

// Serves a folder, which can be replaced, at an address that stays the same.
export class Host {
  // Scripts to run before any other of the page.
  static prelude = [];
  // Functions that the page can call, by name, with a request for /told/NAME?with=ARGUMENT.
  static told = new Map();

  requests = [];
  delay = 0; // milliseconds until a request is answered
  lacks = ""; // a path
  #server;
  #port = 0;

  constructor(served) {
    this.folder = served;
  }
  get address() {
    return `http://127.0.0.1:${this.#port}/`;
  }
  async start() {
    this.#server = createServer(async (request, response) => {
      if (this.delay > 0) await new Promise((resolve) => setTimeout(resolve, this.delay));
      const { pathname, searchParams } = new URL(request.url, "http://localhost");
      const path = normalize(pathname);
      if (path.startsWith("/told/")) {
        Host.told.get(path.slice(6))?.(searchParams.get("with"));
        return response.writeHead(204).end();
      }
      const file = join(this.folder, path === "/" ? "index.html" : path);
      this.requests.push(path);
      if (path === this.lacks || !existsSync(file)) return response.writeHead(404).end();
      response.writeHead(200,
        { "Content-Type": types[extname(file)] ?? "application/octet-stream" });
      return response.end(this.#contents(file));
    });
    await new Promise((resolve) => this.#server.listen(this.#port, "127.0.0.1", resolve));
    this.#port = this.#server.address().port;
    return this;
  }
  // The file with the prelude, and with the digest of a page that has it.
  #contents(file) {
    const name = basename(file);
    if (Host.prelude.length === 0 || !["index.html", "offline.js"].includes(name))
      return readFileSync(file);
    // The page's policy holds for scripts that follow it.
    const first = readFileSync(join(this.folder, "index.html"), "utf8")
      .replace("<head>", () => `<head><script>${Host.prelude.join("\n")}</script>`);
    return name === "index.html" ? first : readFileSync(file, "utf8")
      .replace(/("index\.html": ")[0-9a-f]{64}/,
        `$1${createHash("sha256").update(first).digest("hex")}`);
  }
  async stop() {
    const stopped = new Promise((resolve) => this.#server.close(resolve));
    this.#server.closeAllConnections();
    await stopped;
  }
}
