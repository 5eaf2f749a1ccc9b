#!/usr/bin/python3
"""Tests the page that `leds preview --format html` writes in a real browser: leds_test.py BOARDCTL

Compares the states that the page shows with the JSON of the preview, tick by tick.
"""
import json
import os
import pathlib
import random
import subprocess
import sys
import tempfile
import xml.etree.ElementTree

from selenium import webdriver
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys

from browser import become_desktop, become_phone, browser, requested_urls

HOSTILE = "<img src=x onerror=alert(1)></script>"
TABLE = f"""
[leds]
tick_ms = 50
file = [
    {{ mask = 0x1, path = "led:power", name = "{HOSTILE}", color = "green" }},
    {{ mask = 0x2, path = "led:line", color = "yellow" }},
    {{ mask = 0x5, path = "led:any" }},
    {{ mask = 0x10, path = "led:bar1", color = "blue" }},
    {{ mask = 0x20, path = "led:bar2", color = "blue" }},
]
command = [
    {{ word1 = "system", word2 = "boot", mask = 0x1, action = "blink", group = 1, default = true }},
    {{ word1 = "system", word2 = "ready", mask = 0x1, action = "on", group = 1 }},
    {{ word1 = "line", word2 = "ring", mask = 0x2, action = "blink", group = 2, time_ms = 1000 }},
    {{ word1 = "line", word2 = "call", number = 3, mask = 0x2, action = "on", group = 2 }},
    {{ word1 = "alarm", word2 = "once", mask = 0x4, action = "flash" }},
    {{ word1 = "lamp", word2 = "test", mask = 0x37, action = "on", time_ms = LONG }},
    {{ word1 = "search", word2 = "start", mask = 0x30, action = "roll-down", group = 3 }},
    {{ word1 = "search", word2 = "stop", mask = 0x30, action = "roll-stop", group = 3 }},
    {{ word1 = "line", word2 = "ring", mask = 0x1, action = "off" }},
    {{ word1 = "all", word2 = "defaults", mask = 0, action = "defaults" }},
    {{ word1 = "solo", word2 = "", mask = 0x1, action = "flash" }},
]
"""
SCRIPT = ["2 search start", "40 line ring", "45 lamp test", "52 alarm once", "70 system ready", "71 no row"]
TICKS = 100
# Waits until the page has reached tick 3 and pauses it in the same frame.
PLAYED = """
const done = arguments[0];
const look = () => {
    if (document.getElementById('scrub').value < 3) return requestAnimationFrame(look);
    document.body.dispatchEvent(new KeyboardEvent('keydown', { key: ' ', bubbles: true }));
    done();
};
look();
"""
LIT = "return [...document.querySelectorAll('#panel li')].map((lamp) => lamp.dataset.lit).join('')"
# Returns the tooltips of all segments that the page shows during the run.
TITLES = """const titles = new Set();
for (let at = 0; at < arguments[0]; ++at) {
    player.seek(at);
    for (const title of document.querySelectorAll('#waves g[data-led] > title')) titles.add(title.textContent);
}
return [...titles]"""
ALL_LIT = f"return Array.from({{ length: arguments[0] }}, (_, at) => {{ player.seek(at); {LIT} }})"


def preview(boardctl, profile, form, lines, ticks):
    at = [word for line in lines for word in ("--at", line)]
    call = [boardctl, "--board", profile, "leds", "preview", "--ticks", str(ticks), "--format", form, *at]
    return subprocess.run(call, check=True, capture_output=True, text=True).stdout


def moments(boardctl, profile, lines, ticks):
    """What the LEDs show in each tick, according to the JSON of the preview."""
    waves = [led["wave"] for led in json.loads(preview(boardctl, profile, "json", lines, ticks))["leds"]]
    return ["".join(marks) for marks in zip(*waves)]


def is_light(title):
    """Whether the tooltip is about a lit LED. For a dark one, the page does not know which command put it out."""
    return ", from " in title and ": dark, " not in title


def drawn_titles(boardctl, profile, lines, ticks):
    picture = xml.etree.ElementTree.fromstring(preview(boardctl, profile, "svg", lines, ticks))
    return {title.text for title in picture.iter("{http://www.w3.org/2000/svg}title") if is_light(title.text)}


class Page:
    def __init__(self, driver, boardctl, folder, long_ms):
        self.driver, self.boardctl = driver, boardctl
        self.profile = str(folder / "board.toml")
        pathlib.Path(self.profile).write_text(TABLE.replace("LONG", str(long_ms)), encoding="utf-8")
        page = folder / f"page{long_ms}.html"
        page.write_text(preview(boardctl, self.profile, "html", SCRIPT, TICKS), encoding="utf-8")
        driver.get(page.as_uri())

    def lit(self):
        return self.driver.execute_script(LIT)

    def tick(self):
        return int(self.driver.find_element(By.ID, "scrub").get_attribute("value"))

    def press(self, *keys):
        body = self.driver.find_element(By.TAG_NAME, "body")
        for key in keys:
            body.send_keys(key)

    def buttons(self):
        return self.driver.find_elements(By.CSS_SELECTOR, "#rows button")

    def shows(self, lines, ticks):
        expected = moments(self.boardctl, self.profile, lines, ticks)
        assert self.driver.execute_script(ALL_LIT, ticks) == expected, lines
        titles = {title for title in self.driver.execute_script(TITLES, ticks) if is_light(title)}
        expected = drawn_titles(self.boardctl, self.profile, lines, ticks)
        assert titles == expected, (lines, titles ^ expected)


def test_steps_and_plays_by_keyboard(page):
    page.shows(SCRIPT, TICKS)
    expected = moments(page.boardctl, page.profile, SCRIPT, TICKS)
    page.press(Keys.HOME)
    for tick in range(1, 6):
        page.press(Keys.ARROW_RIGHT)
        assert (page.tick(), page.lit()) == (tick, expected[tick])
    page.press(Keys.ARROW_LEFT)
    assert page.tick() == 4
    page.press(Keys.END)
    assert page.tick() == TICKS - 1
    play = page.driver.find_element(By.ID, "play")
    page.press(Keys.HOME, " ")
    assert play.text == "Pause"
    page.driver.execute_async_script(PLAYED)
    assert play.text == "Play"
    assert page.lit() == expected[page.tick()]


def test_plays_commands_from_any_tick(page, seed):
    """Presses buttons at random and compares with a preview of the same lines."""
    chance = random.Random(seed)
    start = chance.randrange(TICKS)
    page.driver.execute_script("player.seek(arguments[0])", start)
    lines = [line for line in SCRIPT if int(line.split()[0]) <= start]
    for _ in range(8):
        button = chance.choice([each for each in page.buttons() if each.is_enabled()])
        words = button.find_element(By.TAG_NAME, "span").text
        button.click()
        lines.append(f"{page.tick()} {words}")
        page.driver.execute_script("player.seek(arguments[0])", page.tick() + chance.randrange(40))
    ticks = page.tick() + 1
    for _ in range(2):  # the second time, there is nothing beyond the end
        page.press(Keys.END)
        assert page.tick() == ticks - 1
    page.press(Keys.HOME)
    page.shows(lines, ticks)
    page.driver.find_element(By.ID, "script").click()
    page.shows(SCRIPT, TICKS)


def test_space_plays_after_a_click_on_a_command(page):
    page.driver.execute_script("player.seek(5)")
    page.buttons()[0].click()
    webdriver.ActionChains(page.driver).send_keys(" ").perform()
    assert page.driver.find_element(By.ID, "play").text == "Pause"
    page.driver.find_element(By.ID, "script").click()


def test_shows_texts_as_text_and_fetches_nothing(page):
    assert HOSTILE in page.driver.find_element(By.ID, "panel").text
    assert not page.driver.find_elements(By.TAG_NAME, "img")
    asked = requested_urls(page.driver)
    assert asked and all(url.startswith("file:///") and ".html" in url for url in asked), asked
    assert page.driver.get_log("browser") == []


def test_fits_a_phone(page):
    become_phone(page.driver)
    assert page.driver.execute_script("return document.scrollingElement.scrollWidth") <= 360
    become_desktop(page.driver)


def test_offers_the_script_only_if_there_are_too_many_states(page):
    assert page.buttons() == []
    assert "too many for this page" in page.driver.find_element(By.ID, "hint").text
    page.shows(SCRIPT, TICKS)


def main():
    boardctl = os.path.abspath(sys.argv[1])
    # With reduced motion, a command does not start to play, so the test decides what happens when.
    words = ("--force-prefers-reduced-motion", "--window-size=1000,800")
    with tempfile.TemporaryDirectory() as folder, browser(*words) as driver:
        page = Page(driver, boardctl, pathlib.Path(folder), 500)
        assert len(page.buttons()) == 10, "a row that no line reaches has no button"
        test_steps_and_plays_by_keyboard(page)
        for seed in range(10):
            test_plays_commands_from_any_tick(page, seed)
        test_space_plays_after_a_click_on_a_command(page)
        test_shows_texts_as_text_and_fetches_nothing(page)
        test_fits_a_phone(page)
        test_offers_the_script_only_if_there_are_too_many_states(
            Page(driver, boardctl, pathlib.Path(folder), 3600000))
    print("the page agrees with the preview")


if __name__ == "__main__":
    main()
