"""Rounds against running hosts: floods, and starts and stops at random moments."""
import contextlib
import os
import signal
import socket
import subprocess
import time

from hosting import memory_kb
from parts import PIPE, Host, await_true, expect, faults_in

SLACK_KB = 4096
LINES = (b"system ready", b"line ring 0", b"\0\0", b"lamp test 99999999999999999999", b"%s%n\x1b[2J", b"x" * 4000)


def check_alive(attack, host):
    """The host takes a line, handles it and answers."""
    await_true("a line is sent", lambda: attack.call("leds", "send", "lamp", "test").returncode == 0)
    handled = host.ask()["counters"]["led_lines_handled"]
    await_true("a line is handled", lambda: (attack.call("leds", "send", "lamp", "test"),
                                             host.ask()["counters"]["led_lines_handled"] > handled)[1])


def flood(attack, host):
    senders = [attack.start("leds", "send", "line", "ring", stderr=subprocess.DEVNULL) for _ in range(8)]
    pipe = os.open(PIPE, os.O_WRONLY | os.O_NONBLOCK)
    with contextlib.suppress(BlockingIOError):
        for _ in range(100):
            line = attack.chance.choice((*LINES, attack.chance.randbytes(200)))
            attack.counts["lines flooded"] += 1
            os.write(pipe, line + attack.chance.choice((b"", b"\n")))
    os.close(pipe)
    with contextlib.ExitStack() as stack:
        for _ in range(300):
            client = stack.enter_context(socket.socket(socket.AF_UNIX))
            client.setblocking(False)
            with contextlib.suppress(OSError):  # the host accepts no more connections
                client.connect(str(host.board / "host.socket"))
                attack.counts["connections flooded"] += 1
                client.send(attack.chance.choice((b"", b"{]\0", b'{"method":"org', attack.chance.randbytes(9000),
                                                  b'{"method":"org.boarddrivers.Host.Monitor","more":true}\0')))
    for process in senders:
        process.wait()
    host.process.stdout.read()
    expect(host.process.poll() is None, "the host has ended in a flood")


def floods(attack, end):
    """Lines and garbage from many programs, thousands of connections."""
    with Host(attack, attack.make_board("flooded")) as host:
        expect(host.await_event("ready"), "a host ends")
        for _ in range(5):  # makes the host allocate what it allocates only once
            flood(attack, host)
        check_alive(attack, host)
        before = memory_kb(host.process)
        while time.monotonic() < end:
            flood(attack, host)
        check_alive(attack, host)
        grown = memory_kb(host.process) - before
        expect(grown <= SLACK_KB, f"the host has grown by {grown} kB in floods")
        host.end()


def disturb(attack, host):
    """Stops the host for a moment, or ends it. Returns whether the host still runs."""
    action = attack.chance.choice((signal.SIGSTOP, signal.SIGTERM, signal.SIGKILL))
    attack.counts[f"hosts that got {action.name}"] += 1
    if action != signal.SIGSTOP:
        host.end(action, is_ready=False)
        return False
    host.process.send_signal(signal.SIGSTOP)
    time.sleep(attack.chance.random() / 50)
    host.process.send_signal(signal.SIGCONT)
    return True


def starts(attack, end):
    """Two hosts, of one board or of two, are ended at random moments. The next one starts without a fault."""
    boards = [attack.make_board("first"), attack.make_board("second")]
    while time.monotonic() < end:
        with contextlib.ExitStack() as stack:
            hosts = []
            for _ in range(2):
                hosts.append(stack.enter_context(Host(attack, attack.chance.choice(boards))))
                time.sleep(attack.chance.random() / 30)
            for host in hosts:
                if disturb(attack, host):
                    expect(host.await_event("ready"), "a host has ended that was only stopped")
                    host.end()
        with Host(attack, attack.chance.choice(boards)) as host:
            events = host.await_event("ready")
            expect(events and not faults_in(events), f"after others have ended, a host starts with {faults_in(events)}")
            check_alive(attack, host)
            host.end()
        attack.counts["starts after others"] += 1


def successions(attack, end):
    """If a host ends, another running host takes over the LED pipe."""
    boards = [attack.make_board("first"), attack.make_board("second")]
    while time.monotonic() < end:
        with Host(attack, boards[0]) as first, Host(attack, attack.chance.choice(boards)) as second:
            # Either may be the first to take the pipe.
            expect(first.await_event("ready") and second.await_event("ready"), "a host ends")
            ended, left = attack.chance.sample((first, second), 2)
            ended.end(attack.chance.choice((signal.SIGTERM, signal.SIGKILL)))
            await_true("a line is sent to the host that is left",
                       lambda: attack.call("leds", "send", "lamp", "test").returncode == 0)
            expect(left.await_event("led-command"), "the host that was left has ended")
            left.end()
        attack.counts["hosts that took over"] += 1
