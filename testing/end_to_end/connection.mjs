// The driver's end of the connection to the stand-in browser loader: one JSON document per line in both
// directions.
import { once } from 'node:events';
import net from 'node:net';
import { createInterface } from 'node:readline';

// Waits for the loader on a port of its own. `hear` receives every document that is no reply.
export async function listen(hear) {
  let socket;
  const waiting = []; // for replies, by the number of the request
  const server = net.createServer((accepted) => {
    server.close(); // programs started by this one have no driver
    socket = accepted.setNoDelay(true);
    const lines = createInterface({ input: socket });
    // A killed program resets the connection; "close" follows.
    for (const end of [socket, lines]) end.on('error', () => {});
    socket.on('close', () => {
      for (const { command, reject } of waiting) reject(new Error(`the program ended during ${command}`));
    });
    lines.on('line', (line) => {
      const document = JSON.parse(line);
      if ('reply' in document) waiting[document.reply].resolve(document);
      else hear(document);
    });
  });
  await once(server.listen(0, '127.0.0.1'), 'listening');
  return {
    port: server.address().port,
    close: () => server.close() && socket?.destroy(),
    // Sends a request to the loader on the program's UI thread. The answer arrives after the program's
    // handlers have returned.
    request: (command, fields = {}) =>
      new Promise((resolve, reject) => {
        if (!socket?.writable) return reject(new Error(`${command}: the program is not connected`));
        const id = waiting.push({ command, resolve, reject }) - 1;
        socket.write(`${JSON.stringify({ command, id, ...fields })}\n`);
      }),
  };
}
