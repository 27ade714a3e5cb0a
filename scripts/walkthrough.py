#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Ringlet Authors
# SPDX-License-Identifier: BSD-3-Clause

"""The steps of the demo: two applications' calls in the desktop host, seen and checked from both sides.

Called by scripts/demo with the build directory, and perhaps --stay.
"""

import os
import subprocess
import sys
import threading

from timeline import DoesNotHold, run, say, start_bus, start_host


def start_second(demo):
    return demo.start(
        "second app", demo.path("kit/examples/qt/ringlet-example-qt"),
        "sip:grace@example.org", "Grace Hopper",
    )


ADA = "sip:ada@example.org"
GRACE = "sip:grace@example.org"


def walk(demo):
    demo.step("A host with the plug-in, and an application that registers")
    start_bus(demo)
    host = start_host(demo)
    app = demo.start("first app", demo.path("kit/simulator/ringlet-sim"))
    app.expect("^registered ")
    demo.table({})

    demo.step("An incoming call appears")
    app.type(f'incoming ada {ADA} name="Ada Lovelace"')
    app.expect("^ada shown 3 incoming")
    call = demo.table({ADA: "incoming"})[ADA]
    if (call["name"], call["direction"]) != ("Ada Lovelace", "incoming"):
        raise DoesNotHold(f"name and direction are wrong: {call['name']}, {call['direction']}")

    demo.step("It is answered from the host")
    demo.command("answer")
    app.expect("^ada command accept")
    demo.table({ADA: "active"})

    demo.step("Its duration runs")
    demo.wait_for("calls", "the duration does not run", lambda calls: calls[0]["duration"] >= 2)
    demo.table({ADA: "active"})

    demo.step("Mute and audio route go both ways")
    demo.command("mute", "on")
    app.expect("^ada audio-route muted=yes")
    app.type("mute ada off")
    demo.audio(muted=False)
    demo.command("output", "speaker")
    app.expect('^ada audio-route .*output="speaker"')
    app.type("route ada headset headset")
    demo.audio(input="headset", output="headset")
    app.expect('^ada audio-route .*input="headset" output="headset"')

    demo.step("Tones arrive")
    demo.command("dtmf", "12#")
    app.expect('^ada command tones "12#"')

    demo.step("Hold and release")
    demo.command("hold", "on")
    app.expect("^ada command hold on")
    demo.table({ADA: "held"})
    demo.command("hold", "off")
    app.expect("^ada command hold off")
    demo.table({ADA: "active"})

    demo.step("Meanwhile another application's call comes in")
    second = start_second(demo)
    second.expect("^UpdateAudioRouteState")
    demo.table({ADA: "active", GRACE: "incoming"})

    demo.step("Dialling is refused, with the reason")
    provider = demo.read("providers")[0]["id"]
    refusal = demo.callctl("dial", provider, "123")
    say("host", refusal.stderr.strip())
    if refusal.returncode == 0 or "cannot dial with this provider" not in refusal.stderr:
        raise DoesNotHold("the reason is not 'cannot dial with this provider'")

    demo.step("The second application is killed: its call goes, the first one's stays")
    second.end(kill=True)
    demo.table({ADA: "active"})

    demo.step("The far end of the first call hangs up")
    app.type("hangup ada")
    app.expect("^ada removed")
    demo.table({})
    return host, app


def explain_a_mistake(demo):
    """An application whose call does not show, and the checker that says why."""
    demo.step("A call that does not show, and why")
    eve = demo.start("third app", demo.path("kit/simulator/ringlet-sim"), "--manager", "/eve/other")
    eve.expect("^registered ")
    eve.type("raw eve")
    eve.type("raw eve object /eve/call zelkovar.call.Call1 Status=u:3 Incoming=b:true Uri=s:sip:eve@example.org")
    eve.type("raw eve register /eve")
    eve.expect("^application eve registered")
    demo.table({})
    say("checker", "$ ringlet-check why")
    result = subprocess.run([demo.path("kit/checker/ringlet-check"), "why"], capture_output=True, text=True, check=False)
    for line in result.stdout.splitlines():
        say("checker", line)
    if result.returncode != 1 or "interface-misspelt" not in result.stdout:
        raise DoesNotHold(f"the cause is not named: {result.stdout}{result.stderr}")
    eve.end()


def stay(demo, app):
    demo.step("Two calls are up")
    app.type(f'incoming ada {ADA} name="Ada Lovelace"')
    app.expect("^ada shown")
    start_second(demo).expect("^UpdateAudioRouteState")
    demo.table({ADA: "incoming", GRACE: "incoming"})
    programs = [demo.path("desktop/callctl"), demo.path("kit/simulator"), demo.path("kit/checker")]
    print(
        f"""
In another terminal:

    export DBUS_SESSION_BUS_ADDRESS='{os.environ["DBUS_SESSION_BUS_ADDRESS"]}'
    export PATH="{':'.join(programs)}:$PATH"
    callctl watch             # the calls, kept up to date
    callctl answer c3         # and hangup, hold, dtmf, mute, output: see callctl --help
    ringlet-check watch       # what goes over the bus, and what is wrong with it
    ringlet-sim               # an application of your own: type help
    busctl --user tree org.tarnwickle.voicecall

Ctrl-C here ends it all.""",
        flush=True,
    )
    threading.Event().wait()


def main(build, staying):
    def steps(demo):
        host, app = walk(demo)
        explain_a_mistake(demo)
        if staying:
            stay(demo, app)
        demo.step("Host and application end cleanly")
        demo.end_cleanly(application=app, host=host)

    return run(build, steps, when_interrupted=0 if staying else 130)


if __name__ == "__main__":
    sys.exit(main(os.path.abspath(sys.argv[1]), "--stay" in sys.argv[2:]))
