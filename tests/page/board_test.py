#!/usr/bin/python3
"""Tests the page of boardweb in a real browser: board_test.py BOARDCTL BOARDWEB [--screenshots FOLDER]

Compares what the page shows of a simulated board with the status socket. With --screenshots, only takes the pictures
of the documentation.
"""
import argparse
import base64
import contextlib
import json
import os
import pathlib
import re
import subprocess
import sys

from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys

sys.path.append(str(pathlib.Path(__file__).resolve().parents[1] / "support"))
from browser import become_desktop, become_phone, browser, requested_urls
from hosting import take_tmp
from stage import Board, Page

HOSTILE = "<img src=x onerror=alert(1)><script>alert(2)</script>"
MOST_BYTES = 60 * 1024
PAGE = pathlib.Path(__file__).resolve().parents[2] / "tools/boardweb/page"
# Records the lit LEDs of the panel after each change.
RECORD = """window.shown = [];
new MutationObserver(() => window.shown.push([...document.querySelectorAll("#panel button")].filter(
    (lamp) => lamp.dataset.state === "lit").map((lamp) => lamp.querySelector(".name").textContent).join(" ")))
    .observe(document.getElementById("panel"), { subtree: true, attributeFilter: ["data-state"] });"""
# Invents an hour of values for the charts in the pictures, because the board was only just started.
HOUR = """const real = window.fetch;
window.fetch = async (path, options) => {
    const answer = await real(path, options);
    if (path !== "history" || !answer.ok) return answer;
    const data = await answer.json();
    const wave = (ago) => 41.5 - 4 * Math.sin(ago / 95) - 1.5 * Math.sin(ago / 23);
    for (const series of data.series) {
        const last = series.values[series.values.length - 1];
        series.values = Array.from({ length: 720 }, (_, i) => series.kind === "fan"
            ? [0, 1, 1, 2, 1, 0][Math.floor(i / 120)] : i > 380 && i < 400 ? null : wave(720 - i));
        series.values.push(last);
    }
    return new Response(JSON.stringify(data));
};"""

# Adds 301 events out of order, two of them with the same time. Returns the events that are listed.
EVENTS = """const [done] = arguments;
import("./log.js").then(({ addEvents }) => {
    const event = (time, text) => ({ event: "test", time: `2099-01-01T00:${time}Z`, text });
    const two = (number) => String(number).padStart(2, "0");
    const all = Array.from({ length: 300 }, (_, i) => i * 7 % 300).map(
        (i) => event(`${two(Math.floor(i / 60))}:${two(i % 60)}`, `event ${i}`));
    addEvents([...all, event("04:59", "event 300")]);
    requestAnimationFrame(() => done([...document.querySelectorAll("#event-list li span")].map(
        (item) => item.textContent)));
});"""

# From the next stream on, the page gets no masks, as if the host were too old to report them.
BECOME_OLD = """const listen = EventSource.prototype.addEventListener;
EventSource.prototype.addEventListener = function (name, act) {
    if (name !== "leds") listen.call(this, name, act);
};"""


def test_shows_the_leds_at_the_pace_of_the_sequencer(page):
    board = page.board
    with board.connect("MonitorLeds", more=True) as monitor:
        page.driver.execute_script(RECORD)
        board.send("system ready", "search start")
        bars = {f"power bar{number}" for number in range(1, 5)}
        page.until(lambda: bars <= set(page.driver.execute_script("return shown")), "the panel does not roll")
        shown = set(page.driver.execute_script("return shown"))
        monitor.setblocking(False)
        replies = monitor.recv(1 << 20).split(b"\0")[:-1]
    masks = {json.loads(reply)["parameters"]["lit"] for reply in replies}
    told = {" ".join(led["name"] for led in board.leds() if led["mask"] & mask) for mask in masks}
    assert shown <= told, shown - told
    board.send("search stop", "line call")
    steady = {led["name"]: led["name"] in ("power", "line") for led in board.leds()}
    page.until(lambda: board.lit() == steady, "the LEDs do not become steady")
    page.until(lambda: page.lit() == steady, "the page does not show what the socket says")


def test_opens_why_by_keyboard(page):
    page.board.send("line call")
    page.until(lambda: page.lit()["line"], "the line is not lit")
    page.until(lambda: page.press(Keys.TAB) or page.focused().accessible_name.startswith("line"), "no LED gets focus")
    lamp = page.focused()
    assert lamp.accessible_name == "line: lit"
    page.press(Keys.ENTER)
    told = re.search(r"driven by *:? *(row .*) since ", page.board.run("leds", "why", "line"))
    page.await_text("#why-list", told[1])
    page.until(lambda: page.has("#why-title", "line") and lamp.get_attribute("aria-expanded") == "true", "not expanded")
    page.press(Keys.ESCAPE)
    assert not page.driver.find_element(By.ID, "why").is_displayed() and page.focused() == lamp


def test_shows_an_alarm_that_comes_and_goes(page):
    page.board.heat(91)
    page.await_text("#alarm-list", "91.000 degrees Celsius, over its maximum of 85")
    page.await_text("[role=alert]", "Alarm: thermal")
    assert page.driver.title.startswith("(1 alarm)")
    chart = 'svg[aria-label*="highest 91.0\u00a0°C"]'
    page.until(lambda: page.driver.find_elements(By.CSS_SELECTOR, chart), "the chart does not show the alarm")
    page.board.heat(41)
    page.await_text("#alarm-list", "No alarm")
    page.await_text("[role=alert]", "Alarm over: thermal")
    page.await_text("#event-list", "below its maximum of 85")


def test_asks_for_the_leds_if_the_host_no_longer_reports_them(page):
    page.board.send("line call")
    page.until(lambda: page.lit()["line"], "the line is not lit")
    page.driver.execute_script(BECOME_OLD)
    first = page.driver.current_window_handle
    page.driver.switch_to.new_window("tab")
    page.driver.close()  # the page is shown again, with a new stream
    page.driver.switch_to.window(first)
    page.await_link("live")
    page.board.send("line idle")
    page.until(lambda: not page.lit()["line"], "the page shows an old state")
    page.open()
    page.await_link("live")


def test_lists_the_latest_events(page):
    assert page.driver.execute_async_script(EVENTS) == [f"event {i}" for i in range(300, 100, -1)]
    page.open()
    page.await_link("live")


def test_outlives_the_host(page):
    board = page.board
    board.kill(board.host)
    page.await_link("gone")
    assert re.search(r"as of \d\d:\d\d:\d\d", page.text("#link")) and page.has("#devices .as-of", "as of")
    board.start_host()
    page.await_link("live")
    assert not page.has(".as-of", "as of")
    board.send("line call")
    page.until(lambda: page.lit()["line"], "the LEDs do not come back")


def test_outlives_boardweb(page):
    page.board.kill(page.board.web)
    page.await_link("lost")
    page.board.start_web()
    page.await_link("live")


def test_is_not_disturbed_by_many_clients(page):
    """These clients ask for events, but do not read them."""
    board = page.board
    with contextlib.ExitStack() as clients:
        open_client = lambda: (client := board.event_client()) and clients.enter_context(client)
        while open_client():
            pass
        for line, is_lit in (("line idle", False), ("line call", True)) * 3:
            board.send(line)
            page.until(lambda is_lit=is_lit: page.lit()["line"] == is_lit, f"the page misses {line}")
        page.driver.get("about:blank")
        page.until(open_client, "boardweb does not notice that the page was closed")
        page.open()
        page.await_link("lost")
        page.await_text("#link", "too many pages are open")
    page.await_link("live")


def test_follows_the_board_in_more_tabs_than_connections(page):
    """A browser has at most six connections to a server."""
    driver = page.driver
    first = driver.current_window_handle

    def check(line, is_lit):
        page.board.send(line)
        page.until(lambda: page.lit().get("line") == is_lit, f"a tab misses {line}")

    check("line call", True)
    for _ in range(7):
        driver.switch_to.new_window("tab")
        page.open()
        page.await_link("live")
    check("line idle", False)
    driver.switch_to.window(first)
    check("line call", True)
    page.await_link("live")
    for tab in set(driver.window_handles) - {first}:
        driver.switch_to.window(tab)
        driver.close()
    driver.switch_to.window(first)


def test_is_not_shown_under_a_foreign_name(page):
    port = page.board.address.split(":")[1]
    page.driver.get(f"http://evil.example:{port}/")
    assert not page.driver.find_elements(By.TAG_NAME, "main")
    page.driver.get(f"http://localhost:{port}/")
    page.await_link("live")


def test_shows_texts_as_text_and_fetches_nothing_else(page):
    page.driver.get("about:blank")
    requested_urls(page.driver)
    page.driver.get_log("browser")
    page.open()
    for place in ("#device-rows", "#tag-rows", "#charts"):
        page.await_text(place, HOSTILE)
    assert not page.driver.find_elements(By.CSS_SELECTOR, "img, script:not([src='board.js'])")
    asked = requested_urls(page.driver)
    assert asked and all(url.startswith(f"http://{page.board.address}/") for url in asked), asked
    log = page.driver.get_log("browser")
    assert log == [], log


def test_fits_a_phone(page):
    become_phone(page.driver)
    page.await_text("#tag-rows", HOSTILE)
    page.until(lambda: page.driver.execute_script("return document.scrollingElement.scrollWidth") <= 360, "too wide")
    become_desktop(page.driver)


def take_picture(page, path, width=1280, most=1000):
    height = page.driver.execute_script("return document.documentElement.scrollHeight")
    clip = {"x": 0, "y": 0, "width": width, "height": min(height, most), "scale": 1}
    words = {"format": "png", "captureBeyondViewport": True, "clip": clip}
    picture = base64.b64decode(page.driver.execute_cdp_cmd("Page.captureScreenshot", words)["data"])
    path.write_bytes(picture)
    assert len(picture) < 150 * 1024, f"{path}: {len(picture)} bytes"


def take_pictures(page, folder):
    driver, board = page.driver, page.board
    driver.execute_cdp_cmd("Page.addScriptToEvaluateOnNewDocument", {"source": HOUR})
    board.send("system ready", "line call", "search start")
    board.run("sim", "press")
    page.open()
    page.await_text("#tag-rows", "SIM-000001")
    page.await_text("#event-list", "button released")
    driver.find_element(By.CSS_SELECTOR, "#panel li:nth-child(2) button").click()
    page.await_text("#why-list", "line call")
    take_picture(page, folder / "board-desktop.png")
    board.heat(91)
    page.await_text("#alarm-list", "over")
    dark = {"name": "prefers-color-scheme", "value": "dark"}
    driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [dark]})
    take_picture(page, folder / "board-dark.png")
    driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": []})
    become_phone(driver)
    take_picture(page, folder / "board-phone.png", 360, 1500)
    become_desktop(driver)
    board.heat(41.5)
    page.await_text("#alarm-list", "No alarm")
    board.kill(board.host)
    page.await_link("gone")
    take_picture(page, folder / "board-gone.png")


def run_tests(page):
    test_shows_the_leds_at_the_pace_of_the_sequencer(page)
    test_opens_why_by_keyboard(page)
    test_shows_an_alarm_that_comes_and_goes(page)
    test_shows_texts_as_text_and_fetches_nothing_else(page)
    test_fits_a_phone(page)
    test_is_not_disturbed_by_many_clients(page)
    test_follows_the_board_in_more_tabs_than_connections(page)
    test_asks_for_the_leds_if_the_host_no_longer_reports_them(page)
    test_lists_the_latest_events(page)
    test_outlives_the_host(page)
    test_outlives_boardweb(page)
    test_is_not_shown_under_a_foreign_name(page)
    total = sum(path.stat().st_size for path in PAGE.iterdir())
    assert total < MOST_BYTES, f"the page has {total} bytes"
    print(f"the page agrees with the board ({total} bytes)")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--screenshots", type=pathlib.Path, metavar="FOLDER")
    parser.add_argument("boardctl", type=os.path.abspath)
    parser.add_argument("boardweb", type=os.path.abspath)
    words = parser.parse_args()
    if not take_tmp(words.boardctl, words.boardweb):
        sys.exit("board_test: needs a private /tmp (the machine forbids one, or the programs are in /tmp)")
    names = ("--window-size=1280,900", "--host-resolver-rules=MAP evil.example 127.0.0.1")
    with browser(*names) as driver:
        board = Board(words.boardctl, words.boardweb, pathlib.Path("/tmp/gateway"))
        if words.screenshots:
            with board:
                take_pictures(Page(driver, board), words.screenshots)
            return
        profile = pathlib.Path(board.profile)
        profile.write_text(profile.read_text(encoding="utf-8").replace("Board sensor", HOSTILE), encoding="utf-8")
        board.run("bd", "put", "-y", "-i", str(board.folder / "eeprom.bin"), f"5=text:{HOSTILE}")
        with board:
            run_tests(Page(driver, board))


if __name__ == "__main__":
    main()
