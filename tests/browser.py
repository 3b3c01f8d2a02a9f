"""Headless Chromium for the tests of pages."""

import json
import os

from selenium import webdriver


def open_browser(script=None):
    """Starts Chromium; `script` runs in every page before its own ones."""
    options = webdriver.ChromeOptions()
    options.binary_location = "/usr/bin/chromium"
    for argument in ("--headless=new", "--disable-gpu", "--hide-scrollbars", "--mute-audio",
                     "--autoplay-policy=no-user-gesture-required"):
        options.add_argument(argument)
    if os.geteuid() == 0:
        options.add_argument("--no-sandbox")
    options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
    service = webdriver.chrome.service.Service("/usr/bin/chromedriver")
    browser = webdriver.Chrome(service=service, options=options)
    if script:
        browser.execute_cdp_cmd("Page.addScriptToEvaluateOnNewDocument", {"source": script})
    return browser


def resize(browser, width, height=800):
    browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                            {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": False})


def show(browser, page, scheme="light", width=1000, height=800):
    """Opens a file in a window of this size."""
    resize(browser, width, height)
    browser.execute_cdp_cmd("Emulation.setEmulatedMedia",
                            {"features": [{"name": "prefers-color-scheme", "value": scheme}]})
    browser.get(page.as_uri())


def requested(browser):
    """The addresses requested since the last call."""
    messages = [json.loads(entry["message"])["message"] for entry in browser.get_log("performance")]
    return {message["params"]["request"]["url"] for message in messages
            if message["method"] == "Network.requestWillBeSent"}


def contrast(first, second):
    """The contrast of two colours "rgb(r, g, b)" by WCAG 2."""
    def luminance(color):
        parts = [int(part) / 255 for part in color[color.index("(") + 1:-1].split(",")[:3]]
        red, green, blue = (p / 12.92 if p <= 0.04045 else ((p + 0.055) / 1.055) ** 2.4 for p in parts)
        return 0.2126 * red + 0.7152 * green + 0.0722 * blue
    low, high = sorted((luminance(first), luminance(second)))
    return (high + 0.05) / (low + 0.05)
