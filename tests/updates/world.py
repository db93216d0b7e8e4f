"""What the update tests share: a publisher with keys and packages, an HTTPS server that behaves as
told, a person's home, a screen, a system that packages are installed to, and a stand-in for the
prompt that asks for a password."""
import contextlib
import http.server
import json
import os
import pathlib
import re
import shutil
import signal
import ssl
import subprocess
import tempfile
import threading
import time

HERE = pathlib.Path(__file__).resolve().parent
RELEASE = HERE.parent.parent / "scripts" / "release.sh"
DAY = 24 * 60 * 60
OWN_VERSION = "2.21"


def run(*words, **more):
    result = subprocess.run([str(word) for word in words], stdout=subprocess.PIPE,
                            stderr=subprocess.STDOUT, text=True, check=False, **more)
    if result.returncode != 0:
        raise RuntimeError(f"{words}: {result.stdout}")
    return result.stdout


def make_certificate(folder, name, host, clock=None):
    """Certificate and key; from a year ago on if there is something that sets the clock wrong."""
    files = (folder / f"{name}.pem", folder / f"{name}.key")
    run("openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256",
        "-nodes", "-days", "800", "-subj", f"/CN={host}", "-addext", f"subjectAltName=DNS:{host}",
        "-keyout", files[1], "-out", files[0],
        env={**os.environ,
             **({"LD_PRELOAD": str(clock), "CLOCK_OFF": str(-400 * DAY)} if clock else {})})
    return files


class Publisher:
    """Keys, packages, and what the release script makes of them."""

    def __init__(self, folder, keys=None):
        self.folder = folder
        self.secret = (keys or folder) / "ours.sec"
        (folder / "notes").write_text("- Lights fade more smoothly.\n- A link is found sooner.\n")
        self.releases = 0
        if keys:
            return
        for who in ("ours", "theirs"):
            run("minisign", "-q", "-G", "-W", "-p", folder / f"{who}.pub", "-s", folder / f"{who}.sec")
        self.key = (folder / "ours.pub").read_text().splitlines()[1]

    def package(self, version, name=None, script=None):
        """A package whose program tells its version, and which may run a script before that. All
        others have the same size in the archive."""
        path = self.folder / f"{name or version}.deb"
        if not path.exists():
            tree = self.folder / f"tree-{name or version}"
            (tree / "DEBIAN").mkdir(parents=True)
            (tree / "usr/lib/corvane").mkdir(parents=True)
            (tree / "usr/lib/corvane/version").write_text(version + "\n")
            (tree / "usr/lib/corvane/filling").write_bytes(os.urandom(200000))
            (tree / "DEBIAN/control").write_text(
                f"Package: corvane\nVersion: {version}\nArchitecture: all\n"
                "Maintainer: Nobody <nobody@ortaline.example>\nDescription: for a test\n")
            if script:
                (tree / "DEBIAN/preinst").write_text("#!/bin/sh\n" + script)
                (tree / "DEBIAN/preinst").chmod(0o755)
            run("dpkg-deb", "-Znone", "--root-owner-group", "--build", tree, path)
        return path

    def sign(self, content, comment, key="ours"):
        file = self.folder / "signed"
        file.write_bytes(content)
        run("minisign", "-S", "-q", "-s", self.folder / f"{key}.sec", "-m", file, "-t", comment)
        return (self.folder / "signed.minisig").read_bytes()

    def release(self, base, version, issued=0, days=30, package=None):
        """The files of a release by name, as the script makes them; dated so many seconds from now."""
        self.releases += 1
        out = self.folder / f"release-{self.releases}"
        run(RELEASE, package or self.package(version), self.secret, base,
            self.folder / "notes", out,
            env={**os.environ, "RELEASE_TIME": str(int(time.time() + issued)),
                 "RELEASE_DAYS": str(days)})
        return {file.name: file.read_bytes() for file in out.iterdir()}


class Site:
    """An HTTPS server. A page is its bytes, or a function that gets the handler and answers."""

    def __init__(self, certificate, port=0):
        self.pages = {}
        self.requests = []
        site = self

        class Handler(http.server.BaseHTTPRequestHandler):
            protocol_version = "HTTP/1.1"

            def do_GET(self):
                site.requests.append(self.path)
                page = site.pages.get(self.path.lstrip("/"))
                try:
                    if callable(page):
                        page(self)
                    elif page is None:
                        self.answer(404, b"Gone")
                    else:
                        self.give(page)
                except (ConnectionError, ssl.SSLError):
                    pass
                if callable(page):
                    self.close_connection = True

            def give(self, content):
                start = re.match(r"bytes=(\d+)-", self.headers.get("Range", ""))
                if start is None:
                    return self.answer(200, content)
                at = int(start[1])
                return self.answer(206, content[at:],
                                   {"Content-Range": f"bytes {at}-{len(content) - 1}/{len(content)}"})

            def answer(self, status, content=b"", headers=None):
                self.send_response(status)
                for name, value in (headers or {}).items():
                    self.send_header(name, value)
                self.send_header("Content-Length", str(len(content)))
                self.end_headers()
                self.wfile.write(content)

            def log_message(self, *_):
                pass

        class Server(http.server.ThreadingHTTPServer):
            daemon_threads = True

            def handle_error(self, *_):
                pass

        self.server = Server(("127.0.0.1", port), Handler)
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(*certificate)
        self.server.socket = context.wrap_socket(self.server.socket, server_side=True,
                                                 do_handshake_on_connect=False)
        threading.Thread(target=self.server.serve_forever, daemon=True).start()
        self.url = f"https://localhost:{self.server.server_address[1]}"


class Hands:
    """A screen, and somebody before it. `state` is the folder of that person's record."""

    def __init__(self, folder):
        self.folder = folder
        self.screen = []
        self.number = None
        self.band_top = None

    def close(self):
        for process in reversed(self.screen):
            end(process)
        shutil.rmtree(self.folder, ignore_errors=True)

    def environment_of_screen(self):
        return {"PATH": os.environ["PATH"], "HOME": str(self.folder), "DISPLAY": f":{self.number}"}

    # What one sees.

    def log(self):
        with contextlib.suppress(FileNotFoundError):
            return (self.state / "log").read_text()
        return ""

    def record(self):
        with contextlib.suppress(FileNotFoundError):
            return json.loads((self.state / "state").read_text())
        return {}

    def await_log(self, pattern, seconds=20):
        eventually(f"no line '{pattern}' in the log:\n{self.log()}",
                   lambda: re.search(pattern, self.log()), seconds)

    def fetched(self):
        """How often a package was asked for."""
        return sum(path.endswith(".deb") for path in self.site.requests)

    # A screen, and hands.

    def open_screen(self):
        if self.number is not None:
            return
        read, write = os.pipe()
        self.screen.append(subprocess.Popen(
            ["Xvfb", "-displayfd", str(write), "-screen", "0", "1100x800x24", "-nolisten", "tcp",
             "-ac"],
            pass_fds=[write], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL))
        os.close(write)
        with os.fdopen(read) as display:
            self.number = display.readline().strip()
        self.screen.append(subprocess.Popen(["openbox"], env=self.environment_of_screen(),
                                            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL))
        # A window that comes up in the same moment would be lost to both.
        eventually("the window manager does not start",
                   lambda: self.xdotool("get_desktop").returncode == 0)

    def xdotool(self, *words):
        return subprocess.run(["xdotool", *map(str, words)], env=self.environment_of_screen(),
                              capture_output=True, text=True, check=False)

    def window(self, name="^Lumora$"):
        found = []

        def look():
            found[:] = self.xdotool("search", "--onlyvisible", "--name", name).stdout.split()
            return found
        eventually(f"there is no window '{name}'", look)
        return found[-1]

    def click_band(self, button):
        """Presses a button of the band once the band has slid up."""
        window = self.window()
        middle = []

        def look():
            middle[:] = self.buttons_of_band(window)[BUTTONS[button]:][:1]
            return middle
        eventually(f"the band does not show '{button}'", look)
        self.xdotool("mousemove", "--window", window, *middle[0], "click", 1)

    def buttons_of_band(self, window):
        """Where the buttons of the band are, from right to left; none before it is all up."""
        picture = self.folder / "screen.ppm"
        picture.unlink(missing_ok=True)
        subprocess.run(["import", "-window", window, "-depth", "8", str(picture)], check=False,
                       env=self.environment_of_screen())
        data = picture.read_bytes() if picture.exists() else b""
        header = re.match(rb"P6\s+(\d+)\s+(\d+)\s+255\s", data)
        if header is None:
            return []
        width, height = int(header[1]), int(header[2])

        def pixel(x, y):
            at = header.end() + 3 * (y * width + x)
            return data[at:at + 3]
        # The line at the band's upper edge, in the colour of what is selected.
        lines = [y for y in range(height - 1, height - HIGHEST_BAND, -1)
                 if pixel(width // 2, y)[2] > pixel(width // 2, y)[0] + 40]
        if not lines or lines[0] != self.band_top:
            self.band_top = lines[0] if lines else None  # it still slides
            return []
        # Just above the texts only the frames of the buttons are dark.
        y = (self.band_top + height) // 2 - ABOVE_TEXTS
        dark = [x for x in range(width - 1, width // 3, -1) if min(pixel(x, y)) < 205]
        edges = [x for i, x in enumerate(dark) if i == 0 or dark[i - 1] != x + 1]
        return [((right + left) // 2, (self.band_top + height) // 2)
                for right, left in zip(edges[::2], edges[1::2])]


class World(Hands):
    """All of it, in a folder of its own, around the programs of a build."""

    def __init__(self, programs):
        self.programs = pathlib.Path(programs).resolve()
        super().__init__(pathlib.Path(tempfile.mkdtemp(prefix="corvane-updates-")))
        self.processes = []
        self.said = (self.folder / "said").open("ab")
        self.publisher = Publisher(self.folder)
        self.clock = self.programs / "clock-off.so"
        self.certificate = self.make_certificate("authority", "localhost")
        self.site = Site(self.certificate)
        self.bin = self.folder / "bin"
        self.bin.mkdir()
        self.homes = 0
        self.fresh()

    def make_certificate(self, name, host):
        return make_certificate(self.folder, name, host, self.clock)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.end_all()
        self.close()

    def end_all(self):
        """Also what the programs here have started."""
        while self.processes:
            end(self.processes.pop())
        for entry in pathlib.Path("/proc").glob("[0-9]*"):
            with contextlib.suppress(OSError):
                if pathlib.Path(os.readlink(entry / "exe")).parent == self.programs and \
                        f"HOME={self.folder}/".encode() in (entry / "environ").read_bytes():
                    os.kill(int(entry.name), signal.SIGKILL)

    # What is there anew for each test.

    def fresh(self):
        self.end_all()
        self.said.truncate(0)
        self.homes += 1
        self.home = self.folder / f"home-{self.homes}"
        (self.home / "run").mkdir(parents=True)
        (self.home / "run").chmod(0o700)
        self.config = self.home / ".config/corvane"
        self.state = self.home / ".local/state/corvane/update"
        self.downloads = self.home / ".cache/corvane/update"
        self.config.mkdir(parents=True)
        self.write_settings(marked=False)
        self.root = self.home / "system"
        self.vault = self.home / "vault"
        (self.root / "var/lib/dpkg/info").mkdir(parents=True)
        (self.root / "var/lib/dpkg/updates").mkdir()
        for name in ("status", "available"):
            (self.root / "var/lib/dpkg" / name).touch()
        self.dpkg("--install", self.publisher.package(OWN_VERSION))
        self.connect(self.site.url, self.certificate[0])
        self.prompt("exec env -i \"$@\"")
        self.site.pages.clear()
        self.site.requests.clear()

    def connect(self, url, authority):
        """What is built into the programs of a real release."""
        (self.programs / "updates").write_text("\n".join(
            [url + "/corvane.json", self.publisher.key, str(authority), str(self.vault),
             str(self.root)]) + "\n")

    def write_settings(self, marked):
        (self.config / "settings").write_text(
            "key\tHKEY_CURRENT_USER\\\\Software\\\\Ortaline Works\\\\Corvane\ninteger\tNoAutopatch\t0\n" +
            ("integer\tUpdate\t1\n" if marked else ""))

    def prompt(self, script):
        """The stand-in for the system's prompt: runs this in the moment of typing the password."""
        (self.bin / "pkexec").write_text("#!/bin/sh\n" + script + "\n")
        (self.bin / "pkexec").chmod(0o755)

    def publish(self, files):
        self.site.pages.update(files)

    def release(self, version, **how):
        files = self.publisher.release(self.site.url, version, **how)
        self.publish(files)
        return files

    def words(self):
        """What the programs have said to whoever started them."""
        return (self.folder / "said").read_text(errors="replace")

    def has_said_yes(self):
        self.state.mkdir(parents=True)
        (self.state / "state").write_text(json.dumps(
            {"state": "downloading", "manifest": self.site.pages["corvane.json"].decode()}))

    # What runs.

    def environment(self, clock=0, screen=False):
        environment = {"HOME": str(self.home), "XDG_RUNTIME_DIR": str(self.home / "run"),
                       "CORVANE_BENCH_DIR": str(self.home / "bench"), "LC_ALL": "C.UTF-8",
                       "PATH": f"{self.bin}:{os.environ['PATH']}"}
        for name in ("LSAN_OPTIONS", "ASAN_OPTIONS"):
            if name in os.environ:
                environment[name] = os.environ[name]
        if screen:
            environment["DISPLAY"] = f":{self.number}"
        else:
            environment["QT_QPA_PLATFORM"] = "offscreen"
        if clock:
            environment.update(LD_PRELOAD=str(self.clock), CLOCK_OFF=str(clock))
        return environment

    def start(self, program, *arguments, **how):
        process = subprocess.Popen([str(self.programs / program), *arguments],
                                   env=self.environment(**how), stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=self.said)
        self.processes.append(process)
        return process

    def update(self):
        """What a restart begins with. Gives the titles of the boxes that a person has to close."""
        self.open_screen()
        boxes = []
        process = self.start("corvane-update", "-register", screen=True)
        def ended():
            if process.poll() is not None:
                return True
            if self.xdotool("search", "--onlyvisible", "--name", "^Error$").stdout:
                boxes.append("Error")
                self.xdotool("key", "Return")
                time.sleep(0.3)
            return False
        eventually("corvane-update does not end", ended, 60)
        return boxes

    def helper(self, *arguments, stdin=b"", environment=None):
        result = subprocess.run([str(self.programs / "corvane-install-update"), *arguments],
                                input=stdin, capture_output=True, check=False, timeout=60,
                                env=environment or {})
        return result.returncode, result.stderr.decode()

    def dpkg(self, *words):
        return run("dpkg", "--force-not-root", "--force-script-chrootless", "--log=/dev/null",
                   f"--instdir={self.root}", f"--admindir={self.root}/var/lib/dpkg", *words)

    def installed(self):
        """The version that the system has, as its database and the program itself say."""
        said = run("dpkg-query", f"--admindir={self.root}/var/lib/dpkg", "--show",
                   "--showformat=${db:Status-Status} ${Version}", "corvane")
        program = (self.root / "usr/lib/corvane/version").read_text().strip()
        return program if said == f"installed {program}" else f"{said}, {program}"

    def make_ready(self):
        """An honest download, once; then the same state again."""
        kept = self.folder / "ready"
        if not kept.exists():
            self.release("2.22")
            self.open_screen()
            corvane = self.start("corvane", screen=True)
            self.click_band("Yes")
            self.await_log("2.22 is fetched, and ours")
            eventually("it is not marked", lambda: "Update" in (self.config / "settings").read_text())
            end(corvane)
            for name in (".config", ".cache", ".local"):
                shutil.copytree(self.home / name, kept / name)
            self.ready_release = dict(self.site.pages)
        shutil.copytree(kept, self.home, dirs_exist_ok=True)
        self.publish(self.ready_release)


HIGHEST_BAND = 120  # pixels, of its main region
ABOVE_TEXTS = 9
BUTTONS = {"Restart": 1, "Skip This Version": 1, "No": 2, "Yes": 3}  # behind Details, from the right


def eventually(what, condition, seconds=20):
    limit = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > limit:
            raise AssertionError(what)
        time.sleep(0.05)


def end(process, how=signal.SIGKILL):
    with contextlib.suppress(ProcessLookupError):
        process.send_signal(how)
    process.wait()
