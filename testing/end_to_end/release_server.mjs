// Stand-in for the server that publishes versions of Varnel.
import { once } from 'node:events';
import { createServer } from 'node:http';

import { holds, until } from './wine.mjs';

// The address compiled into Varnel_loopback.exe.
export const kReleasePort = 23719;
// There is only one, so test files that use it wait for each other.
await until(() => holds('releases of Varnel'), 'the releases', Infinity);
const kErrorPage =
  '<!doctype html><html><head><title>Not here</title></head><body><h1>Not here</h1></body></html>';

// Runs `body` with a server. `answers` has a function of the response per path; other paths are not
// found.
export async function withReleaseServer(answers, body) {
  const requests = [];
  const server = createServer((request, response) => {
    requests.push(request.url);
    (answers[request.url] ?? serve(kErrorPage, 404, 'text/html'))(response);
  });
  await once(server.listen(kReleasePort, '127.0.0.1'), 'listening');
  try {
    return await body(requests);
  } finally {
    server.close().closeAllConnections();
  }
}

export const serve =
  (body, status = 200, type = 'application/json') =>
  (response) =>
    response.writeHead(status, { 'content-type': type }).end(body);
