#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""The steps of the demo with a real call: two softphones, one of them bridged to the desktop host.

Called by scripts/demo with the build directory.
"""

import array
import cmath
import glob
import json
import math
import os
import pathlib
import re
import socket
import sys
import tempfile
import time

from timeline import PATIENCE, DoesNotHold, run, say, start_bus, start_host

LOOPBACK = "127.0.0.1"
TREE = pathlib.Path(__file__).parent.parent
MODULES = "/usr/lib/baresip/modules"
SAMPLES_PER_SECOND = 8000
ANN_HERTZ, BEN_HERTZ = 440, 800


def wait_until(question, condition):
    """Asks until `condition` gives something true, and returns it."""
    deadline = time.monotonic() + PATIENCE
    while True:
        answer = condition()
        if answer:
            return answer
        if time.monotonic() > deadline:
            raise DoesNotHold(question)
        time.sleep(0.02)


class Ports:
    """A hundred ports of the loopback interface. Whoever listens on the first one has them all."""

    def __init__(self):
        for first in range(20000, 32000, 100):
            self.socket = socket.socket()
            self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
            try:
                self.socket.bind((LOOPBACK, first))
                self.socket.listen()
                self.first = first
                return
            except OSError:
                self.socket.close()
        raise DoesNotHold("there are no free ports")

    def __getitem__(self, number):
        return self.first + number


class Control:
    """A connection to the module ctrl_tcp: netstrings with JSON in them."""

    def __init__(self, port):
        self.socket = wait_until(f"nobody listens on port {port}", lambda: self._connect(port))
        self.stream = self.socket.makefile("rb")
        self.events = []

    @staticmethod
    def _connect(port):
        try:
            return socket.create_connection((LOOPBACK, port), PATIENCE)
        except OSError:
            return None

    def _read(self):
        size = b""
        while not size.endswith(b":"):
            byte = self.stream.read(1)
            if not byte:
                raise DoesNotHold("a softphone has closed its control connection")
            size += byte
        return json.loads(self.stream.read(int(size[:-1]) + 1)[:-1])

    def ask(self, command, parameter=""):
        """The text that a command is answered with. Events that come before it are kept."""
        message = json.dumps({"command": command, "params": parameter, "token": "demo"}).encode()
        self.socket.sendall(b"%d:%s," % (len(message), message))
        while True:
            message = self._read()
            if message.get("response"):
                return message["data"]
            self.events.append(f"{message['type']} {message.get('param', '')}")


class Softphone:
    """A baresip. The bridged one is driven by its keyboard, for its control connection is the bridge's."""

    def __init__(self, demo, directory, ports, number, name, hertz, bridged):
        self.name = name
        self.directory = os.path.join(directory, name)
        os.mkdir(self.directory)
        self.keyboard_port = ports[11 + number]
        self.control_port = ports[9 + number]
        self.address = f"sip:{name.lower()}@{LOOPBACK}:{ports[1 + 2 * number]}"
        self._configure(
            SIP_PORT=ports[1 + 2 * number], FIRST_RTP_PORT=ports[20 + 20 * number], LAST_RTP_PORT=ports[39 + 20 * number],
            CONTROL_PORT=self.control_port, KEYBOARD_PORT=self.keyboard_port, TONE=hertz, DIRECTORY=self.directory,
            MODULES=MODULES,
        )
        self.process = demo.start(name, "baresip", "-4", "-f", self.directory, shown=False)
        self.process.expect("baresip is ready")
        self.control = None if bridged else Control(self.control_port)
        say(name, f"baresip is ready as {self.address}")

    def _configure(self, **values):
        config = (TREE / "kit/baresip/loopback.config").read_text(encoding="utf-8")
        for key, value in values.items():
            config = config.replace(f"@{key}@", str(value))
        directory = pathlib.Path(self.directory)
        (directory / "config").write_text(config, encoding="utf-8")
        (directory / "accounts").write_text(f'"{self.name} Example" <{self.address}>;regint=0\n', encoding="utf-8")
        (directory / "contacts").write_text("", encoding="utf-8")

    def type(self, command):
        say(self.name, f"> {command}")
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as keyboard:
            keyboard.sendto(f"/{command}\n".encode(), (LOOPBACK, self.keyboard_port))

    def ask(self, command, parameter=""):
        say(self.name, f"> {command} {parameter}".rstrip())
        return self.control.ask(command, parameter)

    def expect(self, event):
        """Waits for an event that begins so."""

        def found():
            self.control.ask("about")
            return any(seen.startswith(event) for seen in self.control.events)

        wait_until(f"{self.name} was not told {event}", found)
        say(self.name, event)

    def stream(self):
        """Packets sent, packets received, direction, and how long its microphone has been running."""
        text = self.control.ask("audio_debug")

        def find(pattern, otherwise):
            match = re.search(pattern, text)
            return match.group(1) if match else otherwise

        return (
            int(find(r"TX: packets=(\d+)", 0)), int(find(r"rcvd=(\d+)", 0)), find(r"audio dir=(\w+)", ""),
            float(find(r"source: .*\n +time = ([\d.]+) sec", 0)),
        )

    def expect_packets(self, count):
        before = self.stream()

        def flows():
            now = self.stream()
            return now if now[0] >= before[0] + count and now[1] >= before[1] + count else None

        now = wait_until(f"there are not {count} packets more in both directions", flows)
        say(self.name, f"packets sent {before[0]} -> {now[0]}, received {before[1]} -> {now[1]} ({now[2]})")

    def expect_standstill(self):
        last = [self.stream()]

        def stands():
            now = self.stream()
            if now[:2] != last[0][:2]:
                last[0] = now
            return now[3] >= last[0][3] + 0.5

        wait_until("packets do not cease", stands)
        say(self.name, f"no packet in half a second: sent {last[0][0]}, received {last[0][1]} ({last[0][2]})")

    def expect_sound(self, what, seconds, condition):
        """Waits until what it hears from now on is so. It is recorded as it was decoded."""
        start = len(self._recording())

        def heard():
            samples = self._recording()[start:]
            count = int(seconds * SAMPLES_PER_SECOND)
            return len(samples) >= count and condition(samples[-count:])

        wait_until(f"{self.name} does not hear {what}", heard)
        say(self.name, f"hears {what}")

    def _recording(self):
        files = sorted(glob.glob(os.path.join(self.directory, "*-dec.wav")))
        content = pathlib.Path(files[-1]).read_bytes()[44:] if files else b""
        samples = array.array("h", content[: len(content) // 2 * 2])
        if sys.byteorder == "big":
            samples.byteswap()
        return samples


def amplitude(samples, hertz):
    """Of the tone of this frequency."""
    turn = 2j * math.pi * hertz / SAMPLES_PER_SECOND
    return 2 * abs(sum(sample * cmath.exp(turn * i) for i, sample in enumerate(samples))) / len(samples)


def expect_tone(softphone, hertz):
    softphone.expect_sound(f"a tone of {hertz} Hz", 0.1, lambda samples: amplitude(samples, hertz) > 5000)


def expect_silence(softphone):
    softphone.expect_sound("silence", 0.25, lambda samples: max(map(abs, samples)) < 100)


def walk(demo, directory):
    demo.step("A host with the plug-in, and two softphones: Ann's is bridged to the host")
    start_bus(demo)
    host = start_host(demo)
    ports = Ports()
    ann = Softphone(demo, directory, ports, 0, "Ann", ANN_HERTZ, bridged=True)
    ben = Softphone(demo, directory, ports, 1, "Ben", BEN_HERTZ, bridged=False)
    bridge = demo.start(
        "bridge", demo.path("kit/baresip/ringlet-baresip"), "--control", f"{LOOPBACK}:{ann.control_port}"
    )
    bridge.expect("^connected to baresip")
    bridge.expect("^host: registered")
    demo.table({})

    demo.step("Ben calls Ann: it rings in the host, with his name")
    ben.ask("dial", ann.address)
    call = demo.table({ben.address: "incoming"})[ben.address]
    if (call["name"], call["direction"]) != ("Ben Example", "incoming"):
        raise DoesNotHold(f"name and direction are wrong: {call['name']}, {call['direction']}")

    demo.step("It is answered from the host: Ben sees the answer, and packets go both ways")
    demo.command("answer")
    demo.table({ben.address: "active"})
    ben.expect("CALL_ESTABLISHED")
    ben.expect_packets(25)
    expect_tone(ben, ANN_HERTZ)
    expect_tone(ann, BEN_HERTZ)

    demo.step("Mute in the host silences what Ben hears, and only that")
    demo.command("mute", "on")
    expect_silence(ben)
    expect_tone(ann, BEN_HERTZ)
    demo.command("mute", "off")
    expect_tone(ben, ANN_HERTZ)

    demo.step("Tones typed in the host are reported by Ben's softphone")
    demo.command("dtmf", "12#")
    for tone in "12#":
        ben.expect(f"CALL_DTMF_START {tone}")

    demo.step("Hold stops the stream with a new offer, resume restores it")
    demo.command("hold", "on")
    demo.table({ben.address: "held"})
    ben.expect("CALL_REMOTE_SDP offer")
    ben.expect_standstill()
    demo.command("hold", "off")
    demo.table({ben.address: "active"})
    ben.expect_packets(25)

    demo.step("Hold at Ann's softphone itself shows in the host, too")
    ann.type("hold")
    demo.table({ben.address: "held"})
    ann.type("resume")
    demo.table({ben.address: "active"})

    demo.step("Hanging up in the host ends the call for Ben")
    demo.command("hangup")
    ben.expect("CALL_CLOSED")
    demo.table({})

    demo.step("Ann calls Ben: it is dialing until Ben answers; then Ben hangs up")
    ann.type(f"dial {ben.address}")
    demo.table({ben.address: "dialing"})
    ben.expect("CALL_INCOMING")
    ben.ask("accept")
    demo.table({ben.address: "active"})
    ben.expect_packets(25)
    ben.ask("hangup")
    demo.table({})

    demo.step("Host and bridge end cleanly")
    demo.end_cleanly(bridge=bridge, host=host)


def main(build):
    with tempfile.TemporaryDirectory(prefix="ringlet-demo-") as directory:
        return run(build, lambda demo: walk(demo, directory))


if __name__ == "__main__":
    sys.exit(main(os.path.abspath(sys.argv[1])))
