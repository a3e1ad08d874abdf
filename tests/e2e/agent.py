"""Runs inside the application: answers a test that asks for values, one JSON line each way, and leaves everything else to
mouse and keyboard. Ends when the test hangs up; the application then goes on by itself."""
import json
import os
import select
import socket
import traceback

import kxHost


def values(names, channels):
    """{object name: values of the channels}"""
    return {name: [kxHost.channelValue(kxHost.findNode(name), channel) for channel in channels] for name in names}


def answer(request, names):
    try:
        if "eval" in request:
            return {"value": eval(request["eval"], names)}
        exec(request["run"], names)
        return {"value": None}
    except Exception:
        return {"error": traceback.format_exc()}


def serve(path):
    connection = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
    connection.connect(path)
    names = dict(vars(kxHost), values=values)
    pending = b""
    while True:
        kxHost.processEvents()
        if not select.select([connection], [], [], 0.002)[0]:
            continue
        piece = connection.recv(65536)
        if not piece:
            return
        pending += piece
        while b"\n" in pending:
            line, pending = pending.split(b"\n", 1)
            connection.sendall(json.dumps(answer(json.loads(line), names)).encode() + b"\n")


if "KX_E2E_SOCKET" in os.environ:
    serve(os.environ["KX_E2E_SOCKET"])
