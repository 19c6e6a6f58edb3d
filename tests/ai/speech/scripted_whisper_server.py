#!/usr/bin/python3
"""Speaks the interface of whisper.cpp's whisper-server: its options, GET /health, and POST /inference with a form that
holds a WAV file. It hears the sound's length instead of words: "2.0 seconds of de".

Files beside the model turn it otherwise: "open" makes it listen everywhere, "loading" answer 503 once, "dies" and
"hangs" do that at the next question and are gone then, "broken" end it at the start. Its id goes to "pids" with that of
a process that it starts in a session of its own, and what was asked to "asked"."""
import argparse
import io
import json
import os
import subprocess
import sys
import time
import wave
from email.parser import BytesParser
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from pathlib import Path

options = argparse.ArgumentParser()
options.add_argument("--host", default="127.0.0.1")
options.add_argument("--port", type=int, default=8080)
options.add_argument("--model", required=True)
options.add_argument("--threads", type=int)
options.add_argument("--no-timestamps", action="store_true")
told = options.parse_args()
FOLDER = Path(told.model).parent


def once(name):
    try:
        (FOLDER / name).unlink()
        return True
    except FileNotFoundError:
        return False


class Handler(BaseHTTPRequestHandler):
    def answer(self, value, status=200):
        body = json.dumps(value).encode()
        self.send_response(status)
        self.send_header("Content-Type", "application/json")
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def do_GET(self):
        if once("loading"):
            self.answer({"status": "loading model"}, 503)
        else:
            self.answer({"status": "ok"})

    def do_POST(self):
        body = self.rfile.read(int(self.headers["Content-Length"]))
        head = b"Content-Type: " + self.headers["Content-Type"].encode() + b"\r\n\r\n"
        form = {part.get_param("name", header="Content-Disposition"): part.get_payload(decode=True)
                for part in BytesParser().parsebytes(head + body).get_payload()}
        if once("dies"):
            os._exit(1)
        if once("hangs"):
            time.sleep(600)
        with wave.open(io.BytesIO(form["file"])) as sound:
            kind = [sound.getnchannels(), sound.getsampwidth(), sound.getframerate()]
            frames = sound.readframes(sound.getnframes())
        with (FOLDER / "asked").open("a") as asked:
            print(json.dumps([kind, len(frames), form["response_format"].decode()]), file=asked)
        words = f" {len(frames) / 32000:.1f} seconds\n of {form['language'].decode()} [BLANK_AUDIO] (wind)"
        print(words, flush=True)
        self.answer({"error": "no words"} if (FOLDER / "deaf").exists() else {"text": words})

    def log_message(self, *_):
        pass


if (FOLDER / "broken").exists():
    sys.exit("it is broken")
server = ThreadingHTTPServer(("0.0.0.0" if (FOLDER / "open").exists() else told.host, told.port), Handler)
beside = subprocess.Popen(["/bin/sleep", "600"], start_new_session=True)
with (FOLDER / "pids").open("a") as pids:
    print(os.getpid(), beside.pid, file=pids)
server.serve_forever()
