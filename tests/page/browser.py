"""The browser for the tests of pages."""
import json
import os

from selenium import webdriver


def browser(*words):
    """Starts the browser with additional arguments."""
    options = webdriver.ChromeOptions()
    options.binary_location = "/usr/bin/chromium"
    for word in ("--headless=new", *words, *(["--no-sandbox"] if os.geteuid() == 0 else [])):
        options.add_argument(word)
    options.set_capability("goog:loggingPrefs", {"performance": "ALL", "browser": "ALL"})
    return webdriver.Chrome(service=webdriver.chrome.service.Service("/usr/bin/chromedriver"), options=options)


def become_phone(driver):
    driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                           {"width": 360, "height": 740, "deviceScaleFactor": 1, "mobile": True})


def become_desktop(driver):
    driver.execute_cdp_cmd("Emulation.clearDeviceMetricsOverride", {})


def requested_urls(driver):
    """The URLs that the browser has requested since the last call."""
    events = [json.loads(entry["message"])["message"] for entry in driver.get_log("performance")]
    return {event["params"]["request"]["url"] for event in events if event["method"] == "Network.requestWillBeSent"}
