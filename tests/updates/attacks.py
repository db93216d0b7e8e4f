#!/usr/bin/env python3
"""What somebody between the publisher and the person might try, against the real programs, over a
real HTTPS server. None of it installs anything, each leaves the program running, and says why in the
log. Usage: attacks.py PROGRAMS [--long] [NAME...]"""
import gzip
import json
import os
import re
import socket
import subprocess
import sys
import time
import traceback

from world import DAY, OWN_VERSION, World, end, eventually

ATTACKS = []


def attack(stage, says, long=False):
    """A way to attack, what stage of an update it is aimed at, and what the log then says."""
    def enter(function):
        name = function.__name__.replace("_", " ")
        ATTACKS.append((name, stage, says, long, function))
        return function
    return enter


# The manifest: it is read at the start of the program, and nothing comes of it.

@attack("manifest", "no newer version than 2.21")
def an_old_version(world):
    world.release("2.20")


@attack("manifest", "no newer version than 2.21")
def the_same_version_again(world):
    world.release("2.21")


@attack("manifest", "json.minisig could not be fetched")
def a_manifest_without_a_signature(world):
    world.release("2.22")
    del world.site.pages["corvane.json.minisig"]


@attack("manifest", "the manifest is not signed by us")
def a_manifest_that_others_signed(world):
    manifest = world.release("2.22")["corvane.json"]
    world.site.pages["corvane.json.minisig"] = world.publisher.sign(
        manifest, "corvane manifest 2.22", "theirs")


@attack("manifest", "the manifest is not signed by us")
def a_manifest_that_was_changed(world):
    manifest = world.release("2.22")["corvane.json"]
    world.site.pages["corvane.json"] = manifest.replace(b"2.22", b"2.23")


@attack("manifest", "the manifest is not signed by us")
def a_trusted_comment_that_was_changed(world):
    files = world.release("2.22")
    world.site.pages["corvane.json.minisig"] = files["corvane.json.minisig"].replace(
        b"manifest 2.22", b"manifest 2.23")


@attack("manifest", "the manifest is not signed by us")
def the_signature_of_another_manifest(world):
    files = world.release("2.22")
    world.site.pages["corvane.json"] = world.release("2.23")["corvane.json"]
    world.site.pages["corvane.json.minisig"] = files["corvane.json.minisig"]


@attack("manifest", "signature is that of .corvane 2.22 corvane.json. and not of .corvane manifest")
def a_manifest_that_was_signed_as_a_package(world):
    manifest = world.release("2.22")["corvane.json"]
    world.site.pages["corvane.json.minisig"] = world.publisher.sign(
        manifest, "corvane 2.22 corvane.json")


@attack("manifest", "the manifest holds no longer than until")
def a_manifest_that_has_run_out(world):
    world.release("2.22", issued=-31 * DAY)


def look_once(world, clock=0):
    corvane = world.start("corvane", clock=clock)
    world.await_log("is there|no newer version")
    end(corvane)
    (world.state / "log").unlink()


@attack("manifest", "is older than the last one")
def a_manifest_from_before_the_last_one(world):
    old = world.publisher.release(world.site.url, "2.22", issued=-2 * DAY)
    world.release("2.23", issued=-DAY)
    look_once(world)
    world.publish(old)


@attack("manifest", "the manifest holds no longer than until")
def a_clock_that_was_set_back(world):
    world.release("2.22", issued=18 * DAY)
    look_once(world, clock=20 * DAY)
    # One that would have held then, but had run out before the moment at which the clock was right.
    manifest = json.loads(world.release("2.22", issued=18 * DAY + 3600)["corvane.json"])
    manifest["expires"] = manifest["issued"][:11] + "23:59:59Z"
    content = json.dumps(manifest).encode()
    world.publish({"corvane.json": content, "corvane.json.minisig": world.publisher.sign(
        content, "corvane manifest 2.22")})


@attack("manifest", "it is too long")
def a_manifest_that_is_too_long(world):
    content = world.release("2.22")["corvane.json"] + b" " * 300000
    world.publish({"corvane.json": content, "corvane.json.minisig": world.publisher.sign(
        content, "corvane manifest 2.22")})


@attack("manifest", "the manifest is not signed by us")
def a_manifest_that_unpacks_to_a_gigabyte(world):
    bomb = gzip.compress(b" " * 50_000_000)
    world.release("2.22")
    world.site.pages["corvane.json"] = lambda page: page.answer(
        200, bomb, {"Content-Encoding": "gzip"})


@attack("manifest", "could not be fetched: it leads to http://updates.example")
def a_redirect_out_of_https(world):
    world.release("2.22")
    world.site.pages["corvane.json"] = lambda page: page.answer(
        302, headers={"Location": "http://updates.example/corvane.json"})


@attack("manifest", "could not be fetched")
def redirects_in_a_circle(world):
    world.release("2.22")
    world.site.pages["corvane.json"] = lambda page: page.answer(
        302, headers={"Location": world.site.url + "/corvane.json"})


@attack("manifest", "could not be fetched: .*(SSL|certificate|host name)")
def a_server_that_nobody_vouches_for(world):
    world.release("2.22")
    world.connect(world.site.url, world.make_certificate("stranger", "localhost")[0])


@attack("manifest", "could not be fetched: .*(SSL|certificate|host name)")
def a_server_with_a_certificate_for_another_name(world):
    world.release("2.22")
    world.connect(world.site.url.replace("localhost", "127.0.0.1"), world.certificate[0])


@attack("manifest", "the manifest is unsound")
def a_package_that_is_to_come_without_https(world):
    files = world.publisher.release("http://updates.example", "2.22")
    world.publish(files)


@attack("manifest", "could not be fetched: it takes too long", long=True)
def a_manifest_that_comes_a_byte_at_a_time(world):
    world.release("2.22")

    def drip(page):
        page.send_response(200)
        page.send_header("Content-Length", "5000")
        page.end_headers()
        for _ in range(300):
            page.wfile.write(b" ")
            time.sleep(0.5)
    world.site.pages["corvane.json"] = drip


@attack("manifest", "could not be fetched", long=True)
def a_server_that_never_answers(world):
    world.release("2.22")
    world.site.pages["corvane.json"] = lambda page: time.sleep(90)


# The package: the person says Yes, or has said it in an earlier run.

@attack("band", "is another one than the manifest tells of")
def another_package_of_ours_of_the_same_size(world):
    files = world.release("2.22")
    other = world.publisher.release(world.site.url, "2.20")
    assert len(files["corvane_2.22_all.deb"]) == len(other["corvane_2.20_all.deb"])
    world.publish({"corvane_2.22_all.deb": other["corvane_2.20_all.deb"],
                   "corvane_2.22_all.deb.minisig": other["corvane_2.20_all.deb.minisig"]})


@attack("package", "signature is that of .corvane 2.20")
def the_signature_of_another_package_of_ours(world):
    world.release("2.22")
    other = world.publisher.release(world.site.url, "2.20")
    world.publish({"corvane_2.22_all.deb.minisig": other["corvane_2.20_all.deb.minisig"]})


@attack("package", "signature is that of .corvane 2.22 other.deb")
def a_signature_for_another_name(world):
    package = world.release("2.22")["corvane_2.22_all.deb"]
    world.publish({"corvane_2.22_all.deb.minisig": world.publisher.sign(
        package, "corvane 2.22 other.deb")})


@attack("package", "the package is not signed by us")
def a_package_that_others_signed(world):
    package = world.release("2.22")["corvane_2.22_all.deb"]
    world.publish({"corvane_2.22_all.deb.minisig": world.publisher.sign(
        package, "corvane 2.22 corvane_2.22_all.deb", "theirs")})


@attack("package", "deb.minisig could not be fetched")
def a_package_without_a_signature(world):
    world.release("2.22")
    del world.site.pages["corvane_2.22_all.deb.minisig"]


@attack("package", "is another one than the manifest tells of")
def a_package_with_one_byte_changed(world):
    package = bytearray(world.release("2.22")["corvane_2.22_all.deb"])
    package[len(package) // 2] ^= 1
    world.publish({"corvane_2.22_all.deb": bytes(package)})


@attack("package", "is shorter than the manifest says")
def a_package_that_was_cut(world):
    package = world.release("2.22")["corvane_2.22_all.deb"]
    world.publish({"corvane_2.22_all.deb": package[:-1]})


@attack("package", "is longer than the manifest says")
def a_package_with_something_behind_it(world):
    package = world.release("2.22")["corvane_2.22_all.deb"]
    world.publish({"corvane_2.22_all.deb": package + b"x"})


@attack("package", "is longer than the manifest says")
def a_package_without_an_end(world):
    world.release("2.22")

    def flood(page):
        page.send_response(200)
        page.end_headers()
        for _ in range(10000):
            page.wfile.write(b"x" * 65536)
    world.site.pages["corvane_2.22_all.deb"] = flood


@attack("package", "is longer than the manifest says")
def a_part_that_begins_elsewhere(world):
    package = world.release("2.22")["corvane_2.22_all.deb"]

    def part(page):
        if "Range" in page.headers:
            return page.answer(206, package, {"Content-Range": f"bytes 0-{len(package) - 1}/*"})
        page.send_response(200)
        page.send_header("Content-Length", str(len(package)))
        page.end_headers()
        page.wfile.write(package[:100000])
        page.wfile.flush()
        page.connection.shutdown(socket.SHUT_RDWR)
    world.site.pages["corvane_2.22_all.deb"] = part


@attack("package", "could not be fetched: it leads to http://updates.example")
def a_package_that_leads_out_of_https(world):
    world.release("2.22")
    world.site.pages["corvane_2.22_all.deb"] = lambda page: page.answer(
        302, headers={"Location": "http://updates.example/corvane.deb"})


def precious(world):
    file = world.home / "precious"
    file.write_text("a day's work")
    return file


@attack("package", "the package is not signed by us")
def a_link_in_the_place_of_what_is_fetched(world):
    a_package_that_others_signed(world)
    file = precious(world)
    world.downloads.mkdir(parents=True)
    for name in ("update.part", "update.deb", "update.deb.minisig"):
        (world.downloads / name).symlink_to(file)
    return lambda: file.read_text() == "a day's work"


@attack("package", "the package is not signed by us")
def a_second_name_of_a_file_in_the_place_of_what_is_fetched(world):
    a_package_that_others_signed(world)
    file = precious(world)
    world.downloads.mkdir(parents=True)
    os.link(file, world.downloads / "update.part")
    return lambda: file.read_text() == "a day's work"


@attack("package", "the folder .* can't be used")
def a_link_in_the_place_of_the_folder(world):
    world.release("2.22")
    elsewhere = world.home / "elsewhere"
    elsewhere.mkdir()
    world.downloads.parent.mkdir(parents=True)
    world.downloads.symlink_to(elsewhere)
    return lambda: not any(elsewhere.iterdir())


@attack("package", "the folder .* belongs to somebody else")
def a_folder_of_somebody_else(world):
    world.release("2.22")
    world.downloads.mkdir(parents=True)
    os.chown(world.downloads, 65534, 65534)
    return lambda: not any(world.downloads.iterdir())


@attack("package", "could not be fetched", long=True)
def a_package_that_never_comes(world):
    world.release("2.22")
    world.site.pages["corvane_2.22_all.deb"] = lambda page: time.sleep(40)


# What lies there, verified, and the moments until it is installed.

@attack("installing", "2.22 was not installed: the package is not signed by us")
def a_package_that_changes_while_the_password_is_typed(world):
    world.make_ready()
    # Behind what the pipe holds already.
    world.prompt(f'printf X | dd of={world.downloads}/update.deb bs=1 seek=200000 conv=notrunc '
                 '2>/dev/null\nexec env -i "$@"')


@attack("installing", "2.22 was not installed: ")
def an_older_package_of_ours_put_there_while_the_password_is_typed(world):
    world.make_ready()
    swap_with(world, "2.20")


@attack("installing", "2.22 was not installed: ")
def a_newer_package_of_ours_put_there_while_the_password_is_typed(world):
    world.make_ready()
    swap_with(world, "2.23")


def swap_with(world, version):
    files = world.publisher.release(world.site.url, version)
    other = world.home / "other"
    other.mkdir()
    (other / "update.deb").write_bytes(files[f"corvane_{version}_all.deb"])
    (other / "update.deb.minisig").write_bytes(files[f"corvane_{version}_all.deb.minisig"])
    # Over the files that are open already, and in their place.
    world.prompt(f'for f in update.deb update.deb.minisig; do cat {other}/$f >{world.downloads}/$f; '
                 f'cp --remove-destination {other}/$f {world.downloads}; done\nexec env -i "$@"')


@attack("installing", "2.22 was not installed: no password was given")
def no_password(world):
    world.make_ready()
    world.prompt("exit 126")
    return lambda: world.record()["state"] == "ready"


@attack("installing", "2.22 was not installed: another installation is under way")
def two_installations_at_once(world):
    world.make_ready()
    world.vault.mkdir(mode=0o700)
    world.prompt(f'exec flock {world.vault} env -i "$@"')


@attack("installing", "is another one than the manifest tells of")
def a_package_that_was_changed_where_it_lies(world):
    world.make_ready()
    package = bytearray((world.downloads / "update.deb").read_bytes())
    package[1000] ^= 1
    (world.downloads / "update.deb").write_bytes(package)


@attack("installing", "the package is missing")
def a_link_in_the_place_of_what_was_fetched(world):
    world.make_ready()
    (world.downloads / "update.deb").rename(world.home / "away")
    (world.downloads / "update.deb").symlink_to(world.home / "away")


@attack("installing", "2.20 is not newer than 2.21")
def an_older_package_of_ours_with_a_mark(world):
    world.make_ready()
    files = world.publisher.release(world.site.url, "2.20")
    (world.downloads / "update.deb").write_bytes(files["corvane_2.20_all.deb"])
    (world.downloads / "update.deb.minisig").write_bytes(files["corvane_2.20_all.deb.minisig"])
    record = world.record()
    record["manifest"] = files["corvane.json"].decode()
    (world.state / "state").write_text(json.dumps(record))


@attack("installing", "an update is marked, and none is ready")
def a_package_and_a_mark_that_the_record_knows_nothing_of(world):
    world.make_ready()
    (world.state / "state").unlink()


# The privileged side, called by hand.

def given(world, version, key="ours", comment=None):
    """The signature and the package, as the privileged side takes them."""
    package = world.publisher.package(version).read_bytes()
    return world.publisher.sign(package, comment or f"corvane {version} corvane_{version}_all.deb",
                                key) + package


def ours(version, **how):
    return lambda world: given(world, version, **how)


def package_of_ours(world):
    return world.publisher.package("2.22").read_bytes()


def manifest_of_ours(world):
    files = world.publisher.release(world.site.url, "2.22")
    return files["corvane.json.minisig"] + files["corvane.json"]


# What it is called with, and what it is given to read.
for name, says, words, stdin in (
        ("a foreign path", "standard input", ["2.22", "/etc/passwd"], ours("2.22")),
        ("a path for a version", "that is no version", ["/etc/passwd"], ours("2.22")),
        ("an option for a version", "that is no version", ["--force-downgrade"], ours("2.22")),
        ("no version", "standard input", [], ours("2.22")),
        ("nothing to install", "there is no signature", ["2.22"], lambda _: b""),
        ("a package alone", "there is no signature", ["2.22"], package_of_ours),
        ("a signature alone", "the package is not signed by us", ["2.22"],
         lambda world: given(world, "2.22")[:-len(package_of_ours(world))]),
        ("a package that others signed, by hand", "the package is not signed by us", ["2.22"],
         ours("2.22", key="theirs")),
        ("an older version by hand", "2.20 is not newer than 2.21", ["2.20"], ours("2.20")),
        ("the same version by hand", "2.21 is not newer than 2.21", ["2.21"], ours("2.21")),
        ("a version that the package is not", "not of version 2.30", ["2.30"], ours("2.22")),
        ("an older version under a newer signature", "the package is not Corvane 2.30", ["2.30"],
         ours("2.20", comment="corvane 2.30 corvane_2.30_all.deb")),
        ("a manifest for a package", "there is no signature|not of version", ["2.22"],
         manifest_of_ours)):
    ATTACKS.append((name, "by hand", says, False,
                    lambda world, words=words, stdin=stdin: (words, stdin(world))))


@attack("by hand", "no place for the package")
def a_link_in_the_place_of_roots_folder(world):
    (world.home / "open").mkdir(mode=0o777)
    world.vault.symlink_to(world.home / "open")
    return ["2.22"], given(world, "2.22")


@attack("by hand", "no place for the package")
def a_folder_of_root_that_others_may_enter(world):
    world.vault.mkdir()
    world.vault.chmod(0o777)
    return ["2.22"], given(world, "2.22")


@attack("by hand", "2.20 is not newer than 2.21")
def an_environment_that_lies(world):
    false = world.home / "false"
    false.mkdir()
    for tool in ("dpkg", "dpkg-query", "dpkg-deb"):
        (false / tool).write_text("#!/bin/sh\necho installed 1.0\n")
        (false / tool).chmod(0o755)
    return ["2.20"], given(world, "2.20"), {
        "PATH": str(false), "DPKG_FORCE": "all", "DPKG_ADMINDIR": str(false),
        "TMPDIR": str(false), "IFS": "/", "BASH_ENV": str(false / "dpkg")}


@attack("by hand", "2.20 is not newer than 2.21")
def another_package_where_the_copy_lies_when_the_first_was_killed(world):
    waits = world.home / "waits"
    script = f"touch {waits}\nwhile [ -e {waits} ]; do sleep 0.05; done\nexit 1\n"
    package = world.publisher.package("2.22", f"waiting-{world.homes}", script).read_bytes()
    first = subprocess.Popen([world.programs / "corvane-install-update", "2.22"],
                             stdin=subprocess.PIPE, stderr=subprocess.DEVNULL)
    first.stdin.write(world.publisher.sign(package, "corvane 2.22 corvane_2.22_all.deb") + package)
    first.stdin.close()
    eventually("dpkg does not begin", waits.exists)
    end(first)  # and dpkg goes on
    status, said = world.helper("2.22", stdin=given(world, "2.22"))
    waits.unlink()
    expect(status == 2, f"the helper ended with {status}")
    expect_says("another installation is under way", said)
    eventually("dpkg goes on", lambda: world.helper("2.20", stdin=given(world, "2.20"))[0] == 1)
    return ["2.20"], given(world, "2.20")


# How an attack is carried out, and what must hold afterwards.

def carry_out(world, stage, says, function):
    world.fresh()
    if stage == "by hand":
        arguments, stdin, *environment = function(world)
        status, said = world.helper(*map(str, arguments), stdin=stdin,
                                    environment=environment[0] if environment else None)
        expect(status in (1, 2), f"the helper ended with {status}")
        expect_says(says, said)
        expect(not world.vault.exists() or world.vault.is_symlink() or
               not any(world.vault.iterdir()), "something is left in the system's folder")
        return
    holds = function(world) or (lambda: True)
    if stage == "installing":
        world.update()
        world.await_log(says)
        asked = len(world.site.requests)
        corvane = world.start("corvane")
        eventually("the program does not go on", lambda: len(world.site.requests) > asked)
    else:
        if stage == "package":
            world.has_said_yes()
        elif stage == "band":
            world.open_screen()
        corvane = world.start("corvane", screen=stage == "band")
        if stage == "band":
            world.click_band("Yes")
        world.await_log(says, 160)
    expect(holds(), "what must not be touched was touched")
    if stage != "installing":
        eventually(f"the record: {world.record()}",
                   lambda: world.record().get("state", "nothing") == "nothing", 5)
    expect(corvane.poll() is None, "the program has ended")
    end(corvane)


def honest_way(world):
    """That all of it works where nobody attacks: by hand, and from the band to the new version, with
    the window closed in between."""
    world.fresh()
    status, said = world.helper("2.22", stdin=given(world, "2.22"))
    expect(status == 0 and world.installed() == "2.22", f"by hand: {said}")
    world.fresh()
    world.make_ready()
    world.site.requests.clear()
    world.prompt(f'echo "$@" >{world.home}/asked\nexec env -i "$@"')
    world.start("corvane", screen=True)
    eventually("nobody looks", lambda: len(world.site.requests) >= 2)
    world.click_band("Restart")
    world.await_log("2.22 is installed")
    expect(world.installed() == "2.22", f"{world.installed()} is installed")
    expect(world.fetched() == 0, "it was fetched again")
    expect((world.home / "asked").read_text() ==
           f"{world.programs}/corvane-install-update 2.22\n", "the prompt was given something else")
    expect(not any(world.downloads.iterdir()), "something is left")


def expect(holds, what):
    if not holds:
        raise AssertionError(what)


def expect_says(says, said):
    expect(re.search(says, said), f"it says '{said}' and not '{says}'")


def main():
    programs, *rest = sys.argv[1:]
    long = "--long" in rest
    names = [name for name in rest if name != "--long"]
    chosen = [one for one in ATTACKS if (one[0] in names if names else one[3] == long)]
    failed = 0
    with World(programs) as world:
        if not names and not long:
            honest_way(world)
        for name, stage, says, _, function in chosen:
            if function is a_folder_of_somebody_else and os.geteuid() != 0:
                continue  # nobody else can make one
            began = time.monotonic()
            try:
                carry_out(world, stage, says, function)
                expect(world.installed() == OWN_VERSION, f"{world.installed()} is installed")
                print(f"  held: {stage}, {name} ({time.monotonic() - began:.1f} s)", flush=True)
            except Exception as error:  # each is told, and the next one tried
                failed += 1
                print(f"  FAILED: {stage}, {name}: {error}\n{world.words()}", flush=True)
                if not isinstance(error, AssertionError):
                    traceback.print_exc()
    print(f"{len(chosen)} attacks, {failed} got through or were not told")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
