"""Serves one folder with pyftpdlib: pyftpd_server.py PORT ROOT USER PASSWORD LOG PASSIVE FOREIGN RATE

PASSIVE is the range of passive ports, FIRST-LAST; FOREIGN is 1 when a client may name another
host than its own for a data connection; RATE is the limit of such a connection in bytes a second,
0 for none.
"""

import logging
import sys
import warnings

warnings.simplefilter("ignore")  # about asyncore, and about an anonymous user who may write

from pyftpdlib import servers  # noqa: E402
from pyftpdlib.authorizers import DummyAuthorizer  # noqa: E402
from pyftpdlib.handlers import FTPHandler, ThrottledDTPHandler  # noqa: E402
from pyftpdlib.ioloop import Select  # noqa: E402


def main():
    port, root, user, password, log, passive, foreign, rate = sys.argv[1:]
    first, last = (int(number) for number in passive.split("-"))
    logging.basicConfig(filename=log, level=logging.INFO, format="%(asctime)s %(message)s")

    authorizer = DummyAuthorizer()
    authorizer.add_user(user, password, root, perm="elradfmwMT")
    authorizer.add_anonymous(root, perm="elradfmwMT")

    class Handler(FTPHandler):
        pass

    class SlowData(ThrottledDTPHandler):
        read_limit = write_limit = int(rate)

    Handler.authorizer = authorizer
    Handler.banner = "pyftpdlib at your service"
    Handler.passive_ports = range(first, last + 1)
    Handler.permit_foreign_addresses = foreign == "1"
    if int(rate) > 0:
        Handler.dtp_handler = SlowData
    # The default loop, epoll's, now and then misses a data connection whose descriptor has the
    # number of one that has just been closed, and then waits for it in vain. And sessions in one
    # process take such events for their own: each gets a process here.
    servers.IOLoop = Select
    address = ("127.0.0.1", int(port))
    servers.MultiprocessFTPServer(address, Handler, ioloop=Select()).serve_forever()


main()
