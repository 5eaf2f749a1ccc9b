"""A hosted simulated board and its page in a browser, for the tests of boardweb."""
import json
import re
import socket
import subprocess

from selenium import webdriver
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import WebDriverWait

from hosting import ask

PATIENCE = 60  # seconds, until a test fails
LIT = """return Object.fromEntries([...document.querySelectorAll("#panel button")].map(
    (lamp) => [lamp.querySelector(".name").textContent, lamp.dataset.state === "lit"]))"""


class Board:
    """A simulated board, its host and its boardweb."""

    def __init__(self, boardctl, boardweb, folder):
        self.boardctl, self.boardweb, self.folder = boardctl, boardweb, folder
        self.profile = str(folder / "board.toml")
        subprocess.run([boardctl, "sim", "create", folder], stdout=subprocess.DEVNULL, check=True)
        with open(self.profile, "a", encoding="utf-8") as profile:
            profile.write("\n[watch]\nperiod_s = 0.5\n")
        self.host = self.web = None
        self.address = "127.0.0.1:0"

    def __enter__(self):
        self.start_host()
        self.start_web()
        return self

    def __exit__(self, *_):
        self.kill(self.web)
        self.kill(self.host)

    def run(self, *words):
        return subprocess.run([self.boardctl, "--board", self.profile, *words], check=True, capture_output=True,
                              text=True).stdout

    def start_host(self):
        # pylint: disable-next=consider-using-with # ended by `kill`
        self.host = subprocess.Popen([self.boardctl, "--board", self.profile, "--format", "json", "run"],
                                     stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        assert any(b'"ready"' in line for line in self.host.stdout), "the host does not start"

    def start_web(self):
        # pylint: disable-next=consider-using-with # ended by `kill`
        self.web = subprocess.Popen([self.boardweb, "--board", self.profile, "--listen", self.address],
                                    stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        found = next(filter(None, (re.search(r"http://([^/]+)/", line) for line in self.web.stdout)), None)
        assert found, "boardweb does not listen"
        self.address = found[1]

    @staticmethod
    def kill(process):
        process.kill()
        process.wait()

    def connect(self, method, more=False):
        connection = socket.socket(socket.AF_UNIX)
        connection.connect(str(self.folder / "host.socket"))
        call = {"method": f"org.boarddrivers.Host.{method}", "more": more}
        connection.sendall(json.dumps(call).encode() + b"\0")
        return connection

    def leds(self):
        return ask(self.folder / "host.socket", "Leds")["parameters"]["leds"]

    def lit(self):
        return {led["name"]: led["lit"] for led in self.leds()}

    def send(self, *lines):
        for line in lines:
            self.run("leds", "send", *line.split())

    def heat(self, celsius):
        """Replaces the value of the sensor in one step, so that no reader sees an empty file."""
        new = self.folder / "dev/new"
        new.write_text(f"{round(celsius * 1000)}\n", encoding="ascii")
        new.rename(self.folder / "dev/temperature")

    def event_client(self):
        """A client that reads only the first line of the answer; None if it is refused."""
        host, port = self.address.split(":")
        client = socket.socket()
        client.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 4096)
        client.connect((host, int(port)))
        client.sendall(f"GET /events HTTP/1.1\r\nHost: {self.address}\r\n\r\n".encode())
        line = b""
        while not line.endswith(b"\r\n"):
            line += client.recv(1)
        if b" 200 " in line:
            return client
        client.close()
        return None


class Page:
    def __init__(self, driver, board):
        self.driver, self.board = driver, board
        self.open()
        self.await_link("live")

    def open(self):
        self.driver.get(f"http://{self.board.address}/")

    def until(self, condition, what):
        WebDriverWait(self.driver, PATIENCE, 0.05).until(lambda _: condition(), what)

    def text(self, selector):
        return self.driver.find_element(By.CSS_SELECTOR, selector).text

    def has(self, selector, text):
        return any(text in each.get_property("textContent")
                   for each in self.driver.find_elements(By.CSS_SELECTOR, selector))

    def await_text(self, selector, text):
        self.until(lambda: self.has(selector, text), f"{selector} does not show '{text}'")

    def await_link(self, link):
        self.until(lambda: self.driver.find_elements(By.CSS_SELECTOR, f'body[data-link="{link}"]'),
                   f"the page does not become {link}")

    def lit(self):
        return self.driver.execute_script(LIT)

    def focused(self):
        return self.driver.switch_to.active_element

    def press(self, key):
        webdriver.ActionChains(self.driver).send_keys(key).perform()
