#!/usr/bin/python3
"""A runtime of a few lines: lists the models in the file "models" of its home folder, and pulls by adding to it.

Files of its home folder turn it otherwise: "open" makes it listen everywhere, "stubborn" deaf to SIGTERM, "keyless"
without its identity key once, "broken" ends it at the start, "unknown" has it refuse to pull. Its id and those of what it starts go to "pids"."""
import json
import os
import signal
import subprocess
import sys
from http.server import BaseHTTPRequestHandler, HTTPServer
from pathlib import Path

HOME = Path(os.environ["HOME"])
MODELS = HOME / "models"


def says(name):
    return (HOME / name).exists()


class Handler(BaseHTTPRequestHandler):
    def answer(self, text, status=200):
        body = text.encode()
        self.send_response(status)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def names(self):
        return MODELS.read_text().split() if MODELS.exists() else []

    def do_GET(self):
        models = [{"name": name, "digest": "d-" + name, "size": 7} for name in self.names()]
        self.answer(json.dumps({"models": models}))

    def do_POST(self):
        model = json.loads(self.rfile.read(int(self.headers["Content-Length"])))["model"]
        print("words of the person", flush=True)
        if says("keyless"):
            (HOME / "keyless").unlink()
            self.answer('{"error": "open /home/a/.ollama/id_ed25519: no such file or directory"}')
            return
        if says("unknown"):
            self.answer('{"error": "it is unknown"}', 404)
            return
        MODELS.write_text("\n".join([*self.names(), model]))
        self.answer('{"status": "pulling", "total": 10, "completed": 9}\n{"status": "success"}\n')

    def do_DELETE(self):
        model = json.loads(self.rfile.read(int(self.headers["Content-Length"])))["model"]
        MODELS.write_text("\n".join(name for name in self.names() if name != model))
        self.answer("")

    def log_message(self, *_):
        pass


if says("broken"):
    sys.exit("it is broken")
if says("stubborn"):
    signal.signal(signal.SIGTERM, signal.SIG_IGN)
host, port = os.environ["OLLAMA_HOST"].split(":")
runner = subprocess.Popen(["/bin/sleep", "600"], start_new_session=True)
with (HOME / "pids").open("a") as pids:
    print(os.getpid(), runner.pid, file=pids)
descriptors = [name for name in os.listdir("/proc/self/fd") if int(name) > 3]  # the third is this listing's own
with (HOME / "seen").open("w") as seen:
    print(sorted(os.environ), os.getpgid(0) == os.getpid(), descriptors, sys.argv[1:], file=seen)
print("words of the runtime", flush=True)
HTTPServer(("0.0.0.0" if says("open") else host, int(port)), Handler).serve_forever()
