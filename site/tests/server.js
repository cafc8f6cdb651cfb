// Serves a folder to a browser of this machine: start(folder) gives the address and a way to stop.
const fs = require('fs');
const http = require('http');
const path = require('path');

const kinds = {
  '.html': 'text/html; charset=utf-8', '.css': 'text/css', '.js': 'text/javascript', '.mjs': 'text/javascript',
  '.svg': 'image/svg+xml', '.png': 'image/png', '.json': 'application/json', '.wasm': 'application/wasm', '.woff2': 'font/woff2',
};

exports.start = async (folder) => {
  const server = http.createServer((request, response) => {
    const name = decodeURIComponent(new URL(request.url, 'http://localhost').pathname);
    const file = path.join(folder, name.endsWith('/') ? name + 'index.html' : name);
    if (!file.startsWith(path.resolve(folder)) || !fs.existsSync(file) || fs.statSync(file).isDirectory()) {
      response.writeHead(404).end();
      return;
    }
    response.writeHead(200, { 'Content-Type': kinds[path.extname(file)] || 'application/octet-stream' });
    fs.createReadStream(file).pipe(response);
  });
  await new Promise((resolve) => server.listen(0, '127.0.0.1', resolve));
  return { address: `http://127.0.0.1:${server.address().port}`, stop: () => server.close() };
};
