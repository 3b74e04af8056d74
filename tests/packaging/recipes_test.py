"""The recipes for other distributions' packages, against what is installed. Takes cmake, the build folder and the folder
of the sources."""

import fnmatch
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

CMAKE, BUILD, SOURCES = sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])
SPEC = SOURCES / "packaging/rpm/kelvo-touch-display.spec"
PKGBUILD = SOURCES / "packaging/arch/PKGBUILD"
# The packages that the recipes make, by the components they hold.
PACKAGES = {"main": "kelvo-touch-display", "kde": "kelvo-touch-display-kde", "driver": "kelvo-touch-driver",
            "simulator": "kelvo-touch-driver-sim"}
# Without a recipe there, since those distributions do not have what it is a part of.
LEFT_OUT = {"syspref", "Unspecified"}


def cached(name):
    return re.search(rf"^{name}:[A-Z]+=(.*)$", (BUILD / "CMakeCache.txt").read_text(), re.MULTILINE)[1]


def components():
    script = (BUILD / "cmake_install.cmake").read_text()
    scripts = [script, *(path.read_text() for path in BUILD.rglob("cmake_install.cmake"))]
    return set(re.findall(r'CMAKE_INSTALL_COMPONENT STREQUAL "(\w+)"', "".join(scripts)))


def places_below_the_prefix():
    """What the macros of the RPM recipe stand for in this build."""
    return {"_bindir": "bin", "_datadir": "share", "_docdir": "share/doc", "_libdir": cached("CMAKE_INSTALL_LIBDIR"),
            "_libexecdir": "libexec", "_localstatedir": "var", "_mandir": "share/man",
            "_metainfodir": "share/metainfo", "_sysconfdir": "etc", "_udevrulesdir": "lib/udev/rules.d",
            "_unitdir": "lib/systemd/system", "_userunitdir": "lib/systemd/user", "_qt6_plugindir": "MODULES",
            "own": f"{cached('CMAKE_INSTALL_LIBDIR')}/kelvo-touch-display"}


def entries_of(package):
    """The installed places that the RPM recipe gives to a package, as patterns."""
    suffix = package.removeprefix("kelvo-touch-display-")
    header = {"kelvo-touch-display": "%files", "kelvo-touch-display-kde": f"%files {suffix}"}.get(
        package, f"%files -n {package}")
    text = SPEC.read_text().split(f"{header}\n", 1)[1]
    lines = re.split(r"^%(?:files|changelog)", text, flags=re.MULTILINE)[0].splitlines()
    entries = []
    for line in filter(None, lines):
        kind, _, rest = line.rpartition(" ")
        if kind.startswith(("%license", "%doc")):
            continue
        entries.append(re.sub(r"%\{(\w+)\}", lambda macro: places_below_the_prefix()[macro[1]], rest))
    return entries


def is_in(path, entry):
    return fnmatch.fnmatchcase(path, entry + "*" if entry.endswith("/") else entry)


def from_pkgbuild(words):
    """What bash says after it has read the recipe for Arch Linux."""
    done = subprocess.run(["bash", "-euc", f"source {PKGBUILD}; {words}"], check=True, capture_output=True, text=True)
    return done.stdout.split()


class Recipes(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.installed = {}
        modules = cached("KELVO_KDE_PLUGIN_DIRECTORY") if "kde" in components() else ""
        for component in PACKAGES.keys() & components():
            stage = pathlib.Path(folder.name, component)
            done = subprocess.run(
                [CMAKE, "--install", BUILD, "--prefix", "/usr", "--component", component], text=True,
                env=dict(os.environ, DESTDIR=str(stage)), stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
            assert done.returncode == 0, done.stdout
            places = [path for path in stage.rglob("*")
                      if path.is_symlink() or not path.is_dir() or not any(path.iterdir())]
            cls.installed[component] = [
                str(path.relative_to(stage / "usr")).replace(modules, "MODULES/plasma/kcms/systemsettings_qwidgets")
                for path in places]

    def test_every_component_has_its_package(self):
        self.assertEqual(components() - LEFT_OUT - PACKAGES.keys(), set())
        self.assertEqual(set(from_pkgbuild('printf "%s\\n" "${pkgname[@]}"')), set(PACKAGES.values()))
        for component, package in PACKAGES.items():
            with self.subTest(package=package):
                self.assertIn(f"_install {component}", " ".join(from_pkgbuild(f"declare -f package_{package}")))

    def test_rpm_packages_hold_what_is_installed_and_nothing_else(self):
        for component, paths in self.installed.items():
            entries = entries_of(PACKAGES[component])
            for path in paths:
                with self.subTest(component=component, path=path):
                    self.assertEqual(len([entry for entry in entries if is_in(path, entry)]), 1)
            for entry in entries:
                with self.subTest(component=component, entry=entry):
                    self.assertTrue(any(is_in(path, entry) for path in paths))

    def test_what_the_administrator_may_change_is_kept(self):
        spec = SPEC.read_text()
        for component, paths in self.installed.items():
            kept = from_pkgbuild(f'_install() {{ :; }}; package_{PACKAGES[component]}; '
                                 'echo "${backup[@]:-}"')
            configuration = [path for path in paths if path.startswith("etc/")]
            with self.subTest(component=component):
                self.assertEqual(kept, configuration)
            for path in configuration:
                self.assertIn("%config(noreplace) %{_sysconfdir}/" + path.removeprefix("etc/"), spec)

    def test_recipes_are_of_the_version_that_is_built(self):
        version = cached("CMAKE_PROJECT_VERSION")
        self.assertEqual(from_pkgbuild('echo "$pkgver"'), [version])
        spec = SPEC.read_text()
        self.assertIn(f"\nVersion:        {version}\n", spec)
        self.assertRegex(spec, rf"%changelog\n\* .* - {re.escape(version)}-1\n")

    def test_rpm_recipe_asks_for_every_library_that_the_build_looks_for(self):
        text = "".join(path.read_text() for path in SOURCES.glob("*/CMakeLists.txt")
                       if path.parent.name not in ("benchmarks", "tests"))
        looked_for = {word.split(">")[0] for call in re.findall(r"pkg_check_modules\(\w+ (.*?)\)", text)
                      for word in call.split() if word.islower()} | {"libsystemd"}
        looked_for |= set(re.findall(r"find_package\((\w+) REQUIRED\)", text)) - {"PkgConfig"}
        asked_for = set(re.findall(r"(?:pkgconfig|cmake)\((.*?)\)", SPEC.read_text()))
        self.assertEqual(looked_for - asked_for, set())


unittest.main(argv=sys.argv[:1])
