"""The sandbox server as ad servers stand: by HTTP/2, at the other end of a link of some length. As a program it is that link:
what either side sends arrives half a round trip later, and a connection's first bytes another round trip, which is that of
TCP's own handshake. Prints its port.

usage: far.py SERVER_PORT ROUND_TRIP_MS"""

import asyncio
import contextlib
import os
import shutil
import socket
import subprocess
import sys
import time


@contextlib.contextmanager
def far_server(port, ca_file, round_trip):
    """Yields the port for a sandbox server on that port, and the file of its authority, as programs take them."""
    with socket.create_server(("127.0.0.1", 0)) as free:
        front = free.getsockname()[1]
    folder = os.path.dirname(ca_file)
    words = [shutil.which("nghttpx", path="/usr/sbin:/usr/bin"), "--conf=/dev/null", "--no-ocsp", "--workers=1", "--log-level=FATAL",
             f"--frontend=127.0.0.1,{front}", f"--backend=127.0.0.1,{port};;tls;sni=ads.velto.example", f"--cacert={ca_file}",
             f"{folder}/server.key", f"{folder}/server.pem"]
    with subprocess.Popen(words, stderr=subprocess.DEVNULL) as proxy:
        try:
            while proxy.poll() is None and not listens(front):
                time.sleep(0.02)
            link_words = [sys.executable, __file__, str(front), str(round_trip)]
            with subprocess.Popen(link_words, stdout=subprocess.PIPE, text=True) as link:
                try:
                    yield [int(link.stdout.readline()), ca_file]
                finally:
                    link.terminate()
        finally:
            proxy.terminate()


def listens(port):
    with socket.socket() as client:
        return client.connect_ex(("127.0.0.1", port)) == 0


async def carry(reader, writer, first, delay):
    loop = asyncio.get_running_loop()
    under_way = asyncio.Queue()

    async def deliver():
        while True:
            arrival, text = await under_way.get()
            await asyncio.sleep(arrival - loop.time())
            if not text:
                return writer.close()
            writer.write(text)

    delivery = asyncio.create_task(deliver())
    await asyncio.sleep(first)
    text = b"begun"
    while text:
        try:
            text = await reader.read(1 << 16)
        except ConnectionError:
            text = b""
        under_way.put_nowait((loop.time() + delay, text))
    await delivery


async def main(server_port, round_trip):
    async def connected(reader, writer):
        server_reader, server_writer = await asyncio.open_connection("127.0.0.1", server_port)
        await asyncio.gather(carry(reader, server_writer, round_trip, round_trip / 2),
                             carry(server_reader, writer, 0, round_trip / 2))

    server = await asyncio.start_server(connected, "127.0.0.1", 0)
    print(server.sockets[0].getsockname()[1], flush=True)
    await server.serve_forever()


if __name__ == "__main__":
    asyncio.run(main(int(sys.argv[1]), float(sys.argv[2]) / 1000))
