#!/usr/bin/env python3
"""An update of the installed package in a system of its own, from the band in the window to the new
version, over HTTPS and with the system's own prompt; and the same killed on the way, at each place.
Usage: clean_root.py ROOT OLD.deb NEW.deb KEY_FOLDER PORT. Needs root. Stopped by whoever made ROOT."""
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time

from world import Hands, Publisher, Site, end, eventually, make_certificate, run

OWN = "/usr/lib/corvane/"
RULE = """polkit.addRule(function(action, subject) {
  if (action.id != "example.ortaline.corvane.install-update" || subject.user != "somebody")
    return polkit.Result.NOT_HANDLED;
  polkit.spawn(["/bin/sh", "-c",
    "echo $1 >>/tmp/asked; while [ -e /tmp/hold ]; do sleep 0.05; done", "sh",
    action.lookup("command_line")]);
  return polkit.Result.YES;
});
"""


class System(Hands):
    """The clean system, with a person who uses the installed program there."""

    def __init__(self, root, old, new, keys, port):
        super().__init__(pathlib.Path(tempfile.mkdtemp(prefix="corvane-clean-root-")))
        self.root, self.old, self.new = pathlib.Path(root), old, new
        self.old_version = run("dpkg-deb", "-f", old, "Version").strip()
        self.new_version = run("dpkg-deb", "-f", new, "Version").strip()
        self.home = self.root / "home/somebody"
        self.state = self.home / ".local/state/corvane/update"
        self.config = self.home / ".config/corvane"
        self.processes = []
        certificate = make_certificate(self.folder, "server", "localhost")
        authority = self.root / "usr/local/share/ca-certificates/updates.crt"
        authority.parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(certificate[0], authority)
        self.within("update-ca-certificates")
        self.site = Site(certificate, port)
        self.publisher = Publisher(self.folder, keys)
        (self.root / "etc/polkit-1/rules.d").mkdir(parents=True, exist_ok=True)
        (self.root / "etc/polkit-1/rules.d/10-test.rules").write_text(RULE)
        (self.root / "etc/hosts").write_text("127.0.0.1 localhost\n")
        (self.root / "run/dbus").mkdir(exist_ok=True)
        (self.root / "run/dbus/pid").unlink(missing_ok=True)
        self.within("dbus-daemon", "--system", "--fork")
        self.open_screen()
        self.files = self.publisher.release(self.site.url, self.new_version, package=new)
        self.package = next(name for name in self.files if name.endswith(".deb"))

    def within(self, *words):
        return run("chroot", self.root, *words,
                   env={"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL": "C.UTF-8",
                        "DEBIAN_FRONTEND": "noninteractive"})

    def begin(self):
        """The old version is installed, and the person has never looked for updates."""
        self.end_all()
        for held in (self.root / "tmp").glob("hold"):
            held.unlink()
        self.within("dpkg", "--force-downgrade", "--install", "/" + os.path.basename(self.old))
        shutil.rmtree(self.home)
        self.home.mkdir()
        self.config.mkdir(parents=True)
        (self.config / "settings").write_text(
            "key\tHKEY_CURRENT_USER\\\\Software\\\\Ortaline Works\\\\Corvane\ninteger\tNoAutopatch\t0\n")
        self.within("chown", "-R", "somebody:", "/home/somebody")
        self.site.pages.clear()
        self.site.pages.update(self.files)
        self.site.requests.clear()

    def start(self, program="corvane"):
        process = subprocess.Popen(
            ["chroot", "--userspec=somebody:somebody", str(self.root), "/usr/bin/env", "-i",
             "HOME=/home/somebody", "USER=somebody", "PATH=/usr/bin:/bin", "LC_ALL=C.UTF-8",
             f"DISPLAY=:{self.number}", OWN + program],
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.processes.append(process)
        return process

    def running(self, program):
        """The numbers of the processes of a program in the system."""
        found = []
        for entry in pathlib.Path("/proc").iterdir():
            try:
                if entry.name.isdigit() and os.readlink(entry / "root") == str(self.root) and \
                        os.path.basename(os.readlink(entry / "exe")).split(" ")[0] == program:
                    found.append(int(entry.name))
            except OSError:
                continue
        return found

    def await_running(self, program):
        eventually(f"no {program} runs", lambda: self.running(program), 30)
        return self.running(program)[0]

    def kill(self, program):
        os.kill(self.await_running(program), signal.SIGKILL)
        eventually(f"{program} goes on", lambda: not self.running(program))

    def end_all(self):
        for program in ("corvane", "corvane-update", "pkexec", "corvane-install-update"):
            for number in self.running(program):
                os.kill(number, signal.SIGKILL)
        for process in self.processes:
            end(process)
        self.processes.clear()

    def installed(self):
        return self.within("dpkg-query", "--show", "--showformat=${db:Status-Status} ${Version}",
                           "corvane")

    # The way, step by step.

    def say_yes(self):
        self.start()
        self.click_band("Yes")

    def download(self):
        self.say_yes()
        self.await_log(f"{self.new_version} is fetched, and ours")

    def restart(self):
        """From what lies there, ready, to the restart."""
        if not self.running("corvane"):
            self.start()
        eventually("it is not marked",
                   lambda: "Update" in (self.config / "settings").read_text(), 30)
        self.click_band("Restart")

    def hold(self):
        (self.root / "tmp/asked").unlink(missing_ok=True)
        (self.root / "tmp/hold").touch()

    def await_prompt(self):
        eventually("nobody asks for a password", (self.root / "tmp/asked").exists, 30)

    def let_go(self):
        (self.root / "tmp/hold").unlink()

    def go_on(self):
        """Whatever has happened, a person comes to the new version by the usual way."""
        self.let_go() if (self.root / "tmp/hold").exists() else None
        self.close_boxes()
        eventually("dpkg goes on", lambda: not self.running("dpkg"), 60)
        if self.installed() != f"installed {self.new_version}":
            if not self.running("corvane"):
                self.start()
            if self.record().get("state") not in ("ready", "downloading", "installing"):
                self.click_band("Yes")
            self.await_log(f"{self.new_version} is fetched, and ours")
            self.restart()
        elif not self.running("corvane"):
            self.start() # who would have started it was killed
        self.await_new()

    def close_boxes(self):
        for _ in range(20):
            if self.running("corvane-update") and self.xdotool(
                    "search", "--onlyvisible", "--name", "^Error$").stdout:
                self.xdotool("key", "Return")
            time.sleep(0.1)

    def await_new(self):
        # What dpkg does for others comes after the package counts as installed.
        eventually(f"it is {self.installed()}",
                   lambda: self.installed() == f"installed {self.new_version}" and
                   not self.running("corvane-install-update") and not self.running("dpkg") and
                   self.running("corvane"), 60)
        self.within("corvanectl", "--version")
        self.end_all()
        self.start()
        eventually(f"the record says {self.record()}",
                   lambda: self.record().get("state") == "nothing")
        said = self.within("dpkg", "--audit")
        if said.strip():
            raise AssertionError(said)

    def must_start(self):
        """Whatever has happened, the program starts."""
        version = self.within("corvanectl", "--version").split()[-1]
        if version not in (self.old_version, self.new_version):
            raise AssertionError(version)


# Where it is killed.

def looking_for_the_manifest(system):
    system.site.pages["corvane.json"] = lambda page: time.sleep(3)
    system.start()
    eventually("nobody asks", lambda: system.site.requests)
    system.kill("corvane")


def asking(system):
    system.start()
    system.await_log(f"{system.new_version} is there")
    system.kill("corvane")


def in_the_middle_of_the_download(system):
    package = system.files[system.package]

    def half(page):
        page.send_response(200)
        page.send_header("Content-Length", str(len(package)))
        page.end_headers()
        page.wfile.write(package[:len(package) // 2])
        page.wfile.flush()
        time.sleep(2)
    system.site.pages[system.package] = half
    system.say_yes()
    part = system.home / ".cache/corvane/update/update.part"
    eventually("nothing comes", lambda: part.exists() and part.stat().st_size >= len(package) // 2)
    system.kill("corvane")


def before_the_signature(system):
    system.site.pages[system.package + ".minisig"] = lambda page: time.sleep(3)
    system.say_yes()
    eventually("nobody asks", lambda: f"/{system.package}.minisig" in system.site.requests)
    system.kill("corvane")


def ready(system):
    system.download()
    system.kill("corvane")


def at_the_prompt(system, program="corvane-update"):
    system.download()
    system.hold()
    system.restart()
    system.await_prompt()
    system.kill(program)


def the_prompt_itself(system):
    at_the_prompt(system, "pkexec")


def while_the_package_is_copied(system):
    system.download()
    system.hold()
    system.restart()
    system.await_prompt()
    starter = system.await_running("corvane-update")
    os.kill(starter, signal.SIGSTOP)
    system.let_go()
    system.kill("corvane-install-update")
    os.kill(starter, signal.SIGCONT)


def the_package_manager_at_once(system, after=0.0):
    system.download()
    system.restart()
    system.await_running("dpkg")
    time.sleep(after)
    for number in system.running("dpkg"):
        os.kill(number, signal.SIGKILL)


def the_package_manager_in_the_middle(system):
    the_package_manager_at_once(system, 0.15)


def the_privileged_side_while_it_installs(system):
    system.download()
    system.restart()
    system.await_running("dpkg")
    system.kill("corvane-install-update")


def the_starter_while_it_installs(system):
    system.download()
    system.restart()
    system.await_running("dpkg")
    system.kill("corvane-update")


KILLED = [looking_for_the_manifest, asking, in_the_middle_of_the_download, before_the_signature,
          ready, at_the_prompt, the_prompt_itself, while_the_package_is_copied,
          the_package_manager_at_once, the_package_manager_in_the_middle,
          the_privileged_side_while_it_installs, the_starter_while_it_installs]


def main():
    root, old, new, keys, port = sys.argv[1:6]
    system = System(root, old, new, pathlib.Path(keys), int(port))
    try:
        system.begin()
        system.download()
        system.restart()
        system.await_new()
        asked = (system.root / "tmp/asked").read_text()
        said = f"{OWN}corvane-install-update {system.new_version}\n"
        if asked != said:
            raise AssertionError(f"the prompt says: {asked}")
        print(f"  from the band to {system.new_version}; the system asked for: {asked.strip()}", flush=True)
        for kill in KILLED:
            system.begin()
            kill(system)
            system.must_start()
            system.site.pages.update(system.files)
            fetched = system.fetched()
            system.go_on()
            if fetched and kill is not in_the_middle_of_the_download and system.fetched() != fetched:
                raise AssertionError(f"{kill.__name__}: it was fetched again")
            print(f"  killed, and no harm: {kill.__name__.replace('_', ' ')}", flush=True)
    except BaseException:
        subprocess.run(["import", "-window", "root", str(pathlib.Path("/tmp") / "clean-root.png")],
                       env=system.environment_of_screen(), check=False)
        print(system.log(), system.record())
        raise
    finally:
        system.close()


if __name__ == "__main__":
    main()
