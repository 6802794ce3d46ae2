"""A real SMTP server on 127.0.0.1 for the e-mail tests, built on aiosmtpd.

Prints "PORT <n>" once it listens, writes every message it accepts to DIR/<n>.eml (the data as
received, after the end-of-data dot is taken off and the dots are unstuffed) and runs until its
standard input closes, so that it never outlives the test that started it.
"""
import argparse
import warnings
import os
import random
import socket
import ssl
import sys

from aiosmtpd.controller import Controller
from aiosmtpd.smtp import AuthResult


class Keeper:
    def __init__(self, folder):
        self.folder = folder
        self.count = 0

    async def handle_DATA(self, server, session, envelope):
        self.count += 1
        with open(os.path.join(self.folder, "%d.eml" % self.count), "wb") as out:
            out.write(envelope.original_content)
        return "250 OK"


def free_port():
    # The controller checks that it is up by connecting to its own port, so it needs a number; and
    # below 50000, the highest port the settings file keeps.
    while True:
        with socket.socket() as probe:
            try:
                probe.bind(("127.0.0.1", random.randint(20000, 49999)))
            except OSError:
                continue
            return probe.getsockname()[1]


def main():
    # aiosmtpd warns about AUTH without TLS; the tests ask for exactly that on purpose.
    warnings.simplefilter("ignore")
    parser = argparse.ArgumentParser()
    parser.add_argument("--dir", required=True)
    parser.add_argument("--mode", choices=["plain", "starttls", "tls"], default="plain")
    parser.add_argument("--cert")
    parser.add_argument("--key")
    parser.add_argument("--auth", help="USER:PASSWORD the server accepts; AUTH is required then")
    args = parser.parse_args()

    context = None
    if args.mode != "plain":
        context = ssl.create_default_context(ssl.Purpose.CLIENT_AUTH)
        context.load_cert_chain(args.cert, args.key)

    options = dict(hostname="127.0.0.1", port=free_port(), ready_timeout=10)
    if args.auth:
        user, password = args.auth.split(":", 1)

        def check(server, session, envelope, mechanism, data):
            return AuthResult(success=data.login.decode() == user and data.password.decode() == password, handled=False)

        options.update(authenticator=check, auth_required=True, auth_require_tls=False)
    if args.mode == "starttls":
        options.update(tls_context=context, require_starttls=True)
    elif args.mode == "tls":
        options.update(ssl_context=context, server_hostname="127.0.0.1")

    controller = Controller(Keeper(args.dir), **options)
    controller.start()
    print("PORT %d" % controller.port, flush=True)
    sys.stdin.read()
    controller.stop()


if __name__ == "__main__":
    main()
