"""Runs inside the application: answers a test that asks for values, one JSON line each way, and leaves everything else to
mouse and keyboard. Ends when the test hangs up; the application then goes on by itself."""
import json
import os
import select
import socket
import traceback

import kxHost


def find(path):
    """The first object of a name; "Leg/0/1" is the second child of its first child."""
    name, *steps = path.split("/")
    node = kxHost.findNode(name)
    for step in steps:
        node = node.children[int(step)]
    return node


def values(paths, channels):
    """{path: values of the channels}"""
    nodes = {path: find(path) for path in paths}
    return {path: [kxHost.channelValue(node, channel) for channel in channels] for path, node in nodes.items()}


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
    names = dict(vars(kxHost), find=find, values=values)
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
