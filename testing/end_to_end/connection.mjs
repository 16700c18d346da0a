// The driver's end of the stand-in browser loader's connection: one JSON document a line in both directions.
import { EventEmitter, once } from 'node:events';
import net from 'node:net';

export class Connection extends EventEmitter {
  #socket;
  #replies = new Map();
  #nextId = 1;

  constructor() {
    super();
    this.server = net.createServer((socket) => this.#accept(socket));
  }

  async listen() {
    this.server.listen(0, '127.0.0.1');
    await once(this.server, 'listening');
    return this.server.address().port;
  }

  close() {
    this.#socket?.destroy();
    this.server.close();
  }

  // Asks the loader on the program's UI thread; the answer comes after the program's handlers have returned.
  request(command, fields = {}) {
    const id = this.#nextId++;
    return new Promise((resolve, reject) => {
      if (!this.#socket?.writable) return reject(new Error(`${command}: the program is not connected`));
      this.#replies.set(id, { command, resolve, reject });
      this.#socket.write(`${JSON.stringify({ command, id, ...fields })}\n`);
    });
  }

  #accept(socket) {
    this.#socket = socket;
    socket.setNoDelay(true);
    socket.on('error', () => {}); // a killed program resets the connection; "close" follows
    socket.on('close', () => {
      for (const { command, reject } of this.#replies.values())
        reject(new Error(`the program ended during ${command}`));
      this.#replies.clear();
    });
    let chunks = [];
    socket.on('data', (chunk) => {
      for (let end; (end = chunk.indexOf(10)) >= 0; chunk = chunk.subarray(end + 1)) {
        this.#receive(JSON.parse(Buffer.concat([...chunks, chunk.subarray(0, end)]).toString('utf8')));
        chunks = [];
      }
      if (chunk.length > 0) chunks.push(chunk);
    });
  }

  #receive(document) {
    if (document.reply === undefined) return this.emit(document.event, document);
    const waiting = this.#replies.get(document.reply);
    this.#replies.delete(document.reply);
    waiting?.resolve(document);
  }
}
