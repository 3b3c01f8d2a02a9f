#!/usr/bin/python3
"""Follows every link of build/docs and opens every page in headless Chromium, on a phone and on a desktop.

    tests/reference/reference_browser_test.py                     run the tests
    tests/reference/reference_browser_test.py --pictures FOLDER   write pictures of some pages instead, to look at
"""

import base64
import html.parser
import pathlib
import re
import sys
import time
import unittest
import urllib.parse

from selenium.webdriver.common.by import By

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests"))
from browser import contrast, open_browser, requested, resize, show

REFERENCE = ROOT / "build/docs"
PHONE, DESKTOP = 390, 1280
PAGES = sorted(REFERENCE.glob("*.html"))


class Page(html.parser.HTMLParser):
    """The links and anchors of a page, and the number of its diagrams."""

    def __init__(self, path):
        super().__init__()
        self.links, self.anchors, self.diagrams = set(), set(), 0
        self.feed(path.read_text())

    def handle_starttag(self, tag, attributes):
        attributes = dict(attributes)
        self.anchors.update(attributes[name] for name in ("id", "name") if attributes.get(name))
        self.links.update(attributes[name] for name in ("href", "src") if attributes.get(name))
        self.diagrams += attributes.get("class") == "diagram"


class LinkTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.pages = {path: Page(path) for path in REFERENCE.rglob("*.html")}

    def broken(self, source, link):
        """Whether a link names no file of the reference, or no anchor in it."""
        address = urllib.parse.urlsplit(link)
        if address.scheme in ("https", "http", "javascript"):
            return False  # requests are counted in the browser
        target = (source.parent / urllib.parse.unquote(address.path)).resolve() if address.path else source
        if address.scheme or not target.is_relative_to(REFERENCE) or not target.is_file():
            return True
        return bool(address.fragment) and target in self.pages and address.fragment not in self.pages[target].anchors

    def test_every_link_and_anchor_of_a_page_exists(self):
        links = [(path, link) for path, page in self.pages.items() for link in page.links]
        self.assertGreater(len(links), 5000)
        self.assertEqual([f"{path.name}: {link}" for path, link in links if self.broken(path, link)], [])

    def test_every_link_of_the_contents_and_of_the_search_exists(self):
        scripts = [path for path in REFERENCE.rglob("*.js") if path.parent.name == "search" or "NAVTREE" not in path.name]
        links = [(path, link) for path in scripts
                 for link in re.findall(r"""["']((?:\.\./)?\w[\w-]*\.html(?:#\w+)?)["']""", path.read_text())]
        self.assertGreater(len(links), 1000)
        self.assertEqual([f"{path.name}: {link}" for path, link in links if self.broken(path, link)], [])

    def test_a_broken_link_is_found(self):
        index = REFERENCE / "index.html"
        for link in ("missing.html", "stream.html#missing", "../check", "file:///etc/hosts"):
            self.assertTrue(self.broken(index, link), link)

    def test_every_document_has_a_page_with_its_diagrams(self):
        for path in (ROOT / "README.md", *(ROOT / "docs").glob("*.md")):
            name = "index" if path.stem == "README" else path.stem
            diagrams = re.findall("^```mermaid$", path.read_text(), re.MULTILINE)
            self.assertEqual(self.pages[REFERENCE / f"{name}.html"].diagrams, len(diagrams), name)

    def test_every_example_has_a_page(self):
        for path in (ROOT / "examples").rglob("*.*"):
            if path.suffix in (".c", ".cpp", ".py", ".rs"):
                name = f"{path.parent.name}_2{path.stem}_8{path.suffix[1:]}-example.html"
                self.assertTrue((REFERENCE / name).is_file(), name)

    def test_every_exported_c_function_is_documented(self):
        text = (REFERENCE / "group__c__interface.html").read_text()
        names = (ROOT / "tests/surface/c_exports.txt").read_text().split()
        self.assertGreater(len(names), 20)
        self.assertEqual([name for name in names if not re.search(f">{name}</(a|b)> ", text)], [])

    def test_private_operations_are_not_documented(self):
        text = "".join(path.read_text() for folder in (REFERENCE, REFERENCE / "search") for path in folder.iterdir()
                       if path.name.startswith(("class", "group", "functions", "all_")) and path.suffix != ".png")
        self.assertIn("ProcessResample", text)
        for name in ("MulitProcess", "getAlgoParam", "ProcessCore2", "CheckPartion", "SplitLR", "mEngine", "mLock"):
            self.assertNotIn(name, text)


class BrowserTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.browser = open_browser()
        cls.addClassCleanup(cls.browser.quit)

    def setUp(self):
        self.browser.get("about:blank")
        self.browser.get_log("browser")
        self.browser.get_log("performance")

    def wait_for(self, condition, what, seconds=20):
        end = time.monotonic() + seconds
        while not condition():
            self.assertLess(time.monotonic(), end, what)
            time.sleep(0.05)

    def widths(self):
        """The widths of what the window, and the part with the text, have to scroll."""
        return self.browser.execute_async_script("""
            const done = arguments[0], text = document.getElementById("doc-content");
            requestAnimationFrame(() => requestAnimationFrame(() => done(
              [document.documentElement.scrollWidth - innerWidth, text.scrollWidth - text.clientWidth])));""")

    def test_every_page_fits_phones_and_desktops_and_requests_nothing_else(self):
        self.assertGreater(len(PAGES), 60)
        wide = []
        for page in PAGES:
            show(self.browser, page, width=PHONE)
            wide += [(page.name, PHONE, extra) for extra in self.widths() if extra > 0]
            resize(self.browser, DESKTOP)
            wide += [(page.name, DESKTOP, extra) for extra in self.widths() if extra > 0]
        self.assertEqual(wide, [])
        outside = [address for address in requested(self.browser)
                   if not address.startswith((REFERENCE.as_uri() + "/", "data:", "about:"))]
        self.assertEqual(outside, [])
        self.assertEqual(self.browser.get_log("browser"), [])

    def found(self, words):
        """What the search shows for these words, as links to their texts."""
        field = self.browser.find_element(By.ID, "MSearchField")
        field.click()
        field.send_keys(words)
        self.wait_for(lambda: self.browser.find_element(By.ID, "MSearchResultsWindow").is_displayed(), words)
        self.browser.switch_to.frame("MSearchResults")
        status = [self.browser.find_element(By.ID, name) for name in ("Loading", "Searching")]
        self.wait_for(lambda: not any(element.is_displayed() for element in status), words)
        return [link for link in self.browser.find_elements(By.CSS_SELECTOR, "a.SRSymbol") if link.is_displayed()]

    def test_the_search_finds_names_and_opens_them(self):
        for width in (PHONE, DESKTOP):
            for words, name, text in (("audio_filter_process", "audio_filter_process", "Processes a block"),
                                      ("Stream::Latency", "Latency", "The delay of the output"),
                                      ("noise", None, None),
                                      ("StreamSettings", "StreamSettings", "Out-of-range values are clamped"),
                                      ("oddities", "Oddities", "AudioFilter")):
                show(self.browser, REFERENCE / "index.html", width=width)
                links = self.found(words)
                if name is None:
                    self.assertEqual(links, [], words)
                else:
                    self.assertEqual(links[0].text, name)
                    links[0].click()
                    self.browser.switch_to.default_content()
                    self.wait_for(lambda: self.browser.current_url.startswith(REFERENCE.as_uri()) and
                                  text in self.browser.find_element(By.ID, "doc-content").text, words)
        self.assertEqual(self.browser.get_log("browser"), [])

    def test_a_phone_reaches_every_part_from_the_menu(self):
        show(self.browser, REFERENCE / "index.html", width=PHONE)
        self.browser.find_element(By.CSS_SELECTOR, ".main-menu-btn").click()
        for name in ("Interfaces", "Examples", "Guides", "Classes", "Headers"):
            entry = self.browser.find_element(By.XPATH, f"//ul[@id='main-menu']//a[contains(., '{name}')]")
            self.wait_for(entry.is_displayed, name)

    def test_text_thread_tags_and_diagrams_have_a_contrast_of_at_least_4_5(self):
        for scheme in ("light", "dark"):
            for name, selectors in (("classAudioFilter", ("h2", ".thread.audio", ".thread.setup", ".thread.any")),
                                    ("architecture", (".contents p", ".diagram text"))):
                show(self.browser, REFERENCE / f"{name}.html", scheme)
                paper = self.browser.find_element(By.TAG_NAME, "body").value_of_css_property("background-color")
                for selector in selectors:
                    element = self.browser.find_element(By.CSS_SELECTOR, selector)
                    ink = element.value_of_css_property("fill" if "text" in selector else "color")
                    self.assertGreaterEqual(contrast(paper, ink), 4.5, f"{selector}, {scheme}")


def write_pictures(folder):
    browser = open_browser()
    for name in ("index", "architecture", "stream", "command_line", "guides", "group__c__interface", "classAudioFilter",
                 "classaudio__filter_1_1Stream", "c_2clean_8c-example"):
        for width, scheme in ((PHONE, "light"), (DESKTOP, "dark")):
            show(browser, REFERENCE / f"{name}.html", scheme, width, 1600)
            time.sleep(0.5)
            picture = browser.execute_cdp_cmd("Page.captureScreenshot", {"format": "png"})
            (folder / f"{name}_{width}_{scheme}.png").write_bytes(base64.b64decode(picture["data"]))
    browser.quit()


if __name__ == "__main__":
    if sys.argv[1:2] == ["--pictures"]:
        write_pictures(pathlib.Path(sys.argv[2]).resolve())
    else:
        unittest.main()
