// The driver's end of the stand-in browser loader's connection: one JSON document a line in both directions.
import { once } from 'node:events';
import net from 'node:net';
import { createInterface } from 'node:readline';

export class Connection {
  #socket;
  #waiting = new Map();
  #nextId = 1;
  #server = net.createServer((socket) => this.#accept(socket));

  // `hear` gets every document that is no reply.
  constructor(hear) {
    this.hear = hear;
  }

  async listen() {
    await once(this.#server.listen(0, '127.0.0.1'), 'listening');
    return this.#server.address().port;
  }

  close() {
    this.#socket?.destroy();
    this.#server.close();
  }

  // Asks the loader on the program's UI thread; the answer comes after the program's handlers have returned.
  request(command, fields = {}) {
    const id = this.#nextId++;
    return new Promise((resolve, reject) => {
      if (!this.#socket?.writable) return reject(new Error(`${command}: the program is not connected`));
      this.#waiting.set(id, { command, resolve, reject });
      this.#socket.write(`${JSON.stringify({ command, id, ...fields })}\n`);
    });
  }

  #accept(socket) {
    this.#socket = socket;
    socket.setNoDelay(true);
    socket.on('close', () => {
      for (const { command, reject } of this.#waiting.values())
        reject(new Error(`the program ended during ${command}`));
      this.#waiting.clear();
    });
    const lines = createInterface({ input: socket });
    // A killed program resets the connection; "close" follows.
    for (const end of [socket, lines]) end.on('error', () => {});
    lines.on('line', (line) => {
      const document = JSON.parse(line);
      const waiting = this.#waiting.get(document.reply);
      this.#waiting.delete(document.reply);
      if (waiting) waiting.resolve(document);
      else this.hear(document);
    });
  }
}
