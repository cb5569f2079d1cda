"""The report in a real browser: it loads without an error, a pick tells the values of .WR1, the slider moves points."""

import shutil

import numpy as np
import pytest
from keld_tools.programs import view_cli
from support import PART, plate, results_text, write_plate

webdriver = pytest.importorskip("selenium.webdriver")
wait = pytest.importorskip("selenium.webdriver.support.ui")
pytestmark = pytest.mark.skipif(not shutil.which("chromedriver"), reason="chromium-driver isn't installed")
TOTAL = np.round(np.random.default_rng(8).uniform(-0.3, 0.3, (20, 3)), 3)
TOTAL[:, 2] = 0.5  # the part stays flat, so that all of it is seen from above


@pytest.fixture
def browser(tmp_path):
    from selenium.webdriver.chrome.service import Service
    from selenium.webdriver.common import utils

    class Loopback(Service):
        """By number: a root without a hosts file doesn't know the name of its own machine."""

        @property
        def service_url(self) -> str:
            return f"http://127.0.0.1:{self.port}"

        def is_connectable(self) -> bool:
            return utils.is_connectable(self.port, "127.0.0.1")

    options = webdriver.ChromeOptions()
    for word in (
        "--headless=new",
        "--remote-debugging-pipe",
        "--no-sandbox",
        "--disable-gpu",
        "--use-angle=swiftshader",
        "--enable-unsafe-swiftshader",
        "--disable-background-networking",
        "--disable-dev-shm-usage",
        "--no-first-run",
        "--window-size=1300,1000",
        f"--user-data-dir={tmp_path / 'profile'}",
    ):
        options.add_argument(word)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    driver = webdriver.Chrome(service=Loopback(shutil.which("chromedriver")), options=options)
    yield driver
    driver.quit()


def test_the_page_shows_picks_and_moves(tmp_path, job, browser, capsys):
    write_plate(tmp_path / "plate.msh")
    drawing = '[[measure]]\nname = "<b>length</b>"\nkind = "distance"\nbetween_at_mm = [[0,0,0],[40,0,0]]\ntolerance_mm = 0.001\n'
    assert job('title = "A </script> part"\n' + PART + drawing)[0] == 0
    (tmp_path / "j.WR1").write_text(results_text(TOTAL, np.linspace(0, 0.019, 20)))

    assert view_cli.main([str(tmp_path / "j"), "--report", "--align", "boundary"]) == 0
    page = (tmp_path / "j.html").read_text()
    browser.get(f"file://{tmp_path}/j.html")

    assert 'src="http' not in page and 'href="http' not in page
    assert browser.execute_script("return document.getElementById('stage').dataset.ready") == "1"
    errors = [entry for entry in browser.get_log("browser") if entry["level"] == "SEVERE"]
    assert not errors
    assert browser.title.startswith("A </script> part")
    assert "<b>length</b>" in browser.find_element("css selector", "#measures tr.out").text

    def script(text, *words):
        return browser.execute_script(text, *words)

    script("[...document.querySelectorAll('button')].find((b) => b.textContent === 'top').click()")
    node = 7
    at = script("return window.keldReport.screenOf(arguments[0])", node)
    canvas = browser.find_element("css selector", "#stage canvas")
    script("arguments[0].scrollIntoView()", canvas)
    frame = script("const r = arguments[0].getBoundingClientRect(); return [r.width, r.height]", canvas)
    offset = [round(at["x"] - frame[0] / 2), round(at["y"] - frame[1] / 2)]
    webdriver.ActionChains(browser).move_to_element_with_offset(canvas, *offset).pause(0.3).perform()
    told = browser.find_element("id", "pick")
    assert told.get_attribute("data-node") == str(node + 1)
    numbers = [float(word) for word in told.text.split("results:")[1].split("mm")[0].split()]
    np.testing.assert_allclose(numbers, TOTAL[node], atol=1e-6)

    slide = "const s = document.getElementById('times'); s.value = arguments[0]; s.dispatchEvent(new Event('input'))"
    places = []
    for value in (0, 1000):
        script(slide, value)
        places.append(script("return window.keldReport.screenOf(arguments[0])", node))
    assert abs(places[1]["x"] - places[0]["x"]) > 3
    script(slide, 0)
    assert script("return window.keldReport.nodeAt(arguments[0], arguments[1])", places[0]["x"], places[0]["y"]) == node
    check_haste(browser, slide)
    shot = np.frombuffer(browser.get_screenshot_as_png(), np.uint8)
    assert len(shot) > 20000 and plate()[0].shape == (20, 3)


def check_haste(browser, slide):
    """As on a machine without a graphics card: fewer pixels and triangles in motion, all of them at rest."""
    script = browser.execute_script
    finer = "const c = document.querySelector('#stage canvas'); return c.width / c.clientWidth"
    script("window.keldReport.hurry(6)")
    frame = f"return new Promise((done) => requestAnimationFrame(() => done((() => {{ {finer} }})())))"
    for wanted, text in ((1.0, f"{slide}; {frame}"), (2.0, finer)):
        wait.WebDriverWait(browser, 20).until(lambda _: script(text, 500) == wanted)
    assert not [entry for entry in browser.get_log("browser") if entry["level"] == "SEVERE"]
    every, few = (np.array(script(f"return [...window.keldReport.coarsened({n})]")).reshape(-1, 3) for n in (1e9, 6))
    sides = plate()[0][few][:, 1:] - plate()[0][few][:, :1]
    assert len(every) == 24 and 2 <= len(few) <= 12
    assert np.linalg.norm(np.cross(sides[:, 0], sides[:, 1]), axis=1).sum() / 2 == pytest.approx(1200, rel=0.35)
