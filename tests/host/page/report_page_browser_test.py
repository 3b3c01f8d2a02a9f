#!/usr/bin/python3
"""Opens report pages of the release build in headless Chromium, plays, switches and measures them.

    tests/host/page/report_page_browser_test.py                    run the tests
    tests/host/page/report_page_browser_test.py --pictures FOLDER  write the pictures of docs/ instead
"""

import base64
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time
import unittest

from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys

ROOT = pathlib.Path(__file__).resolve().parents[3]
sys.path.insert(0, str(ROOT / "tests"))
from browser import contrast, open_browser, requested, show

PROGRAM = ROOT / "build/release/host/audio-filter"
PROMPTS = "/usr/share/sounds/alsa"
MEGABYTE = 1_000_000
HOSTILE = "<script>document.title = 'taken over'</script>&amp;\".wav".replace("/", "\u2215")

# Keeps what the page decodes and the gains that it switches.
SPY = """
    window.decoded = [];
    let calls = 0;
    window.gains = [];
    const decode = AudioContext.prototype.decodeAudioData;
    AudioContext.prototype.decodeAudioData = function (bytes) {
      const sound = calls++; // they may end in any order
      return decode.call(this, bytes).then((buffer) => { window.decoded[sound] = buffer; return buffer; });
    };
    window.GainNode = class extends GainNode {
      constructor(...options) { super(...options); window.gains.push(this); }
    };
"""


def sox(*words):
    subprocess.run(["sox", "-R", *map(str, words)], check=True)


def record_speech(path):
    """Seven seconds: a pause, two prompts, a pause, in white noise at -45 dBFS."""
    speech = path.with_suffix(".speech.wav")
    sox(f"{PROMPTS}/Front_Left.wav", f"{PROMPTS}/Rear_Right.wav", speech, "pad", "1.5", "1.5")
    noise = path.with_suffix(".noise.wav")
    sox(speech, noise, "synth", "whitenoise", "vol", "0.01")
    sox("-m", "-v", "1", speech, "-v", "1", noise, "-b", "16", path)


def clean(recording, page, *options):
    """Cleans a recording. Returns the peak of the resident memory in kB."""
    words = [PROGRAM, "clean", recording, "-o", page.with_suffix(".clean.wav"), "--report", page, "--quiet", *options]
    process = subprocess.Popen(words)
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        raise subprocess.CalledProcessError(process.returncode, words)
    return usage.ru_maxrss


class ReportPageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        recording = cls.folder / HOSTILE
        record_speech(recording)
        cls.page = cls.folder / "page.html"
        clean(recording, cls.page, "--at", "3:denoise=3")
        cls.browser = open_browser(SPY)
        cls.addClassCleanup(cls.browser.quit)

    def setUp(self):
        self.browser.get("about:blank")
        self.browser.get_log("browser")
        self.browser.get_log("performance")
        show(self.browser, self.page)

    def run_script(self, script, *arguments):
        return self.browser.execute_script(script, *arguments)

    def wait_for(self, script, seconds=20):
        """Waits until a JavaScript expression is true."""
        end = time.monotonic() + seconds
        while not self.run_script("return " + script):
            self.assertLess(time.monotonic(), end, script)
            time.sleep(0.05)

    def element(self, selector):
        return self.browser.find_element(By.CSS_SELECTOR, selector)

    def press(self, *keys):
        ActionChains(self.browser).send_keys(*keys).perform()

    def position(self):
        return float(self.element("#place").get_property("value"))

    def pressed(self):
        return self.run_script(
            "return [...document.querySelectorAll('[data-version]')].findIndex((b) => b.ariaPressed === 'true')")

    def wait_for_heard(self, version):
        """Waits until this version alone is heard."""
        self.wait_for("gains.length === 3")
        self.wait_for(f"gains.every((gain, i) => Math.abs(gain.gain.value - (i === {version} ? 1 : 0)) < 0.01)")

    def play(self):
        self.element("#play").click()
        self.wait_for("Number(place.value) > 0.2")

    def test_nothing_is_requested_and_the_console_stays_empty(self):
        self.play()
        self.assertEqual(self.browser.get_log("browser"), [])
        addresses = requested(self.browser)
        self.assertIn(self.page.as_uri(), addresses)
        self.assertEqual([a for a in addresses if a != self.page.as_uri() and not a.startswith("data:")], [])

    def test_a_hostile_file_name_is_text(self):
        self.assertIn("<script>document.title = 'taken over'", self.element("h1").text)
        self.assertIn("<script>", self.browser.title)
        self.assertEqual(self.run_script("return document.scripts.length"), 1)

    def test_the_policy_stops_a_script_that_is_not_the_page_s(self):
        self.run_script("const s = document.createElement('script'); s.textContent = 'window.broken = 1';"
                        "document.body.append(s); document.body.setAttribute('onclick', 'window.broken = 1');"
                        "document.body.click()")
        self.assertIsNone(self.run_script("return window.broken"))
        self.assertTrue(self.browser.get_log("browser"))

    def test_each_sound_plays_in_the_browser_s_own_player(self):
        for i in range(3):
            sound = f"document.querySelectorAll('audio')[{i}]"
            self.run_script(f"{sound}.play()")
            self.wait_for(f"{sound}.currentTime > 0.2")
            self.assertIsNone(self.run_script(f"return {sound}.error"))
            self.assertAlmostEqual(self.run_script(f"return {sound}.duration"),
                                   self.run_script("return Number(player.dataset.duration)"), delta=0.05)

    def test_the_switch_changes_what_is_heard_and_keeps_the_place(self):
        self.play()
        self.wait_for_heard(0)
        for version in (1, 2, 0):
            before = self.position()
            self.element(f"[data-version='{version}']").click()
            self.wait_for_heard(version)
            self.assertEqual(self.pressed(), version)
            self.assertGreaterEqual(self.position(), before)
            self.wait_for(f"Number(place.value) > {before} + 0.2")
        self.assertEqual(self.element("#play").text, "Pause")

    def test_the_pause_is_10_db_quieter_after_and_removed_is_what_is_missing(self):
        self.play()
        before, after, removed = self.run_script("""
            return decoded.map((buffer) => {
              const samples = buffer.getChannelData(0).slice(0.3 * buffer.sampleRate, 1.3 * buffer.sampleRate);
              return 10 * Math.log10(samples.reduce((sum, x) => sum + x * x, 0) / samples.length);
            })""")
        self.assertLess(after, before - 10)
        self.assertLess(abs(removed - before), 3)

    def test_every_key_works(self):
        for key, version in (("b", 1), ("r", 2), ("a", 0), ("x", 1), ("x", 0)):
            self.press(key)
            self.assertEqual(self.pressed(), version, key)
        self.press(Keys.SPACE)
        self.wait_for("Number(place.value) > 0.2")
        self.wait_for_heard(0)
        self.press("b")
        self.wait_for_heard(1)
        self.press(Keys.SPACE)
        self.wait_for("play.textContent === 'Play'")
        at = self.position()
        self.press(Keys.ARROW_RIGHT)
        self.assertAlmostEqual(self.position(), at + 2, delta=0.02)
        self.press(Keys.ARROW_LEFT)
        self.assertAlmostEqual(self.position(), at, delta=0.02)
        self.press(Keys.HOME)
        self.assertEqual(self.position(), 0)

    def test_tab_reaches_each_control_and_shows_the_focus(self):
        reached = []
        for _ in range(6):
            self.press(Keys.TAB)
            reached.append(self.run_script("const e = document.activeElement; return e.id || e.textContent"))
            self.assertEqual(self.run_script("return getComputedStyle(document.activeElement).outlineStyle"), "solid")
        self.assertEqual(reached, ["play", "Before", "After", "Removed", "place", "Levels over time as a table"])

    def test_a_click_on_a_picture_moves_there_and_so_do_the_cursors(self):
        self.element(".spectrogram .canvas").click()  # in the middle
        self.assertAlmostEqual(self.position(), self.run_script("return Number(place.max)") / 2, delta=0.05)
        shares = self.run_script("return [...document.querySelectorAll('.cursor')].map((c) => c.getAttribute('x1'))")
        self.assertEqual(len(shares), 6)
        for share in shares:
            self.assertAlmostEqual(float(share[:-1]), 50, delta=1)

    def test_the_end_stops_and_returns_to_the_start(self):
        self.press(*[Keys.ARROW_RIGHT] * 20, Keys.ARROW_LEFT)
        self.press(Keys.SPACE)
        self.wait_for("play.textContent === 'Pause'")
        self.wait_for("play.textContent === 'Play' && Number(place.value) === 0")

    def test_a_pause_before_the_first_sample_keeps_the_start(self):
        self.run_script("""
            window.shown = [];
            new MutationObserver(() => {
              shown.push(time.textContent);
              if (shown.length < 20 && play.textContent === "Pause") {
                play.click();
                play.click();
              }
            }).observe(play, { childList: true });
            play.click();
        """)
        self.wait_for("shown.length > 0 && Number(place.value) > 0.2")
        self.assertEqual(self.run_script("return shown[0]").split(" / ")[0], "0:00.0")
        self.assertEqual(self.run_script("return shown.filter((text) => text.includes('-'))"), [])
        self.assertEqual(self.browser.get_log("browser"), [])

    def test_light_and_dark_have_a_contrast_of_at_least_4_5(self):
        papers = []
        for scheme in ("light", "dark"):
            show(self.browser, self.page, scheme)
            paper = self.element("body").value_of_css_property("background-color")
            papers.append(paper)
            for selector in ("h1", ".keys", "td", "figcaption", ".key.before", ".key.after", "[data-version='1']"):
                ink = self.element(selector).value_of_css_property("color")
                self.assertGreaterEqual(contrast(paper.replace("rgba", "rgb"), ink.replace("rgba", "rgb")), 4.5,
                                        f"{selector}, {scheme}")
        self.assertNotEqual(*papers)

    def test_a_phone_of_360_pixels_needs_no_sideways_scrolling(self):
        show(self.browser, self.page, width=360)
        self.assertLessEqual(self.run_script("return document.documentElement.scrollWidth"), 360)

    def test_pictures_and_controls_have_texts(self):
        for label in self.run_script("return [...document.querySelectorAll('[role=img]')].map((e) => e.ariaLabel)"):
            self.assertGreater(len(label), 20)
        unnamed = self.run_script("""
            return [...document.querySelectorAll('svg, audio, input, button')].filter((e) =>
              !e.closest('[aria-hidden=true], [role=img]') && !e.ariaLabel && !e.textContent.trim()).length""")
        self.assertEqual(unnamed, 0)

    def test_20_s_of_stereo_noise_at_full_scale_fit_1_mb(self):
        recording = self.folder / "noise.wav"
        sox("-n", "-r", "48000", "-c", "2", "-b", "16", recording, "synth", "20", "whitenoise", "vol", "0.9")
        page = self.folder / "noise.html"
        clean(recording, page)
        self.assertLessEqual(page.stat().st_size, MEGABYTE)

    def test_10_minutes_fit_1_mb_and_little_memory_with_two_parts_to_hear(self):
        recording, page = self.folder / "long.wav", self.folder / "long.html"
        noisy = self.folder / "noisy.wav"
        record_speech(noisy)
        sox(noisy, recording, "repeat", "100")
        self.assertLess(clean(recording, page), 80_000)
        self.assertLessEqual(page.stat().st_size, MEGABYTE)
        show(self.browser, page)
        parts = json.loads(self.element("#player").get_attribute("data-excerpts"))
        self.assertEqual([seconds for _, seconds in parts], [10, 10])
        self.assertEqual(float(self.element("#place").get_attribute("max")), 20)
        self.press(*[Keys.ARROW_RIGHT] * 6)  # 12 s: 2 s into the second part
        cursor = float(self.element(".cursor").get_attribute("x1")[:-1]) / 100
        duration = float(self.element("#player").get_attribute("data-duration"))
        self.assertAlmostEqual(cursor * duration, parts[1][0] + 2, delta=0.1)


def write_pictures(folder):
    with tempfile.TemporaryDirectory() as work:
        page = pathlib.Path(work) / "page.html"
        shutil.copy(ROOT / "out/noisy.wav", work)  # made by ./demo
        os.chdir(work)
        clean("noisy.wav", pathlib.Path("page.html"), "--at", "8:denoise=3", "--at", "12:gain=0.3")
        browser = open_browser(SPY)
        for name, scheme, width in (("light", "light", 900), ("dark", "dark", 900), ("phone", "light", 360)):
            show(browser, page, scheme, width)
            browser.find_element(By.CSS_SELECTOR, ".spectrogram .canvas").click()
            height = browser.execute_script("return document.documentElement.scrollHeight")
            show(browser, page, scheme, width, height)
            time.sleep(0.5)
            picture = browser.execute_cdp_cmd("Page.captureScreenshot", {
                "format": "jpeg", "quality": 60, "captureBeyondViewport": True,
                "clip": {"x": 0, "y": 0, "width": width, "height": height, "scale": 0.8 if width > 500 else 1}})
            (folder / f"report_{name}.jpg").write_bytes(base64.b64decode(picture["data"]))
        browser.quit()


if __name__ == "__main__":
    if sys.argv[1:2] == ["--pictures"]:
        write_pictures(pathlib.Path(sys.argv[2]).resolve())
    else:
        unittest.main()
