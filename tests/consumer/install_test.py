#!/usr/bin/env python3
"""Installs a release build below a scratch prefix and uses it as another project would.

The tree is installed, used once with CMake in the original place, and moved. All other tests use the moved tree.
Usage: install_test.py SOURCE_DIR BUILD_DIR LIBDIR VERSION COMPILER; LIBDIR is relative to the prefix.
"""
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile
import unittest

SOURCE, BUILD = (pathlib.Path(name).resolve() for name in sys.argv[1:3])
LIBDIR, VERSION, COMPILER = sys.argv[3:6]
HERE = pathlib.Path(__file__).resolve().parent
WARNINGS = "-Wall -Wextra -Werror"
OTHERS = "CMAKE_PREFIX_PATH LD_LIBRARY_PATH PKG_CONFIG_PATH PKG_CONFIG_LIBDIR DESTDIR CXXFLAGS LDFLAGS CPATH".split()
CLEAN = {name: value for name, value in os.environ.items() if name not in OTHERS}


def run(*command, folder=None, **variables):
    return subprocess.run(
        [str(word) for word in command], cwd=folder, env=CLEAN | variables, stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=300, check=False,
    )


def done(*command, **more):
    """The output of a command, which must succeed."""
    result = run(*command, **more)
    if result.returncode != 0:
        raise AssertionError(f"{shlex.join(map(str, command))}: {result.returncode}\n{result.stdout}")
    return result.stdout


def install(prefix, **variables):
    done("cmake", "--install", BUILD, "--prefix", prefix, **variables)


def files(tree):
    """All entries except folders; links with their targets."""
    return sorted(
        f"{path.relative_to(tree)}" + (f" -> {os.readlink(path)}" if path.is_symlink() else "")
        for path in tree.rglob("*") if path.is_symlink() or not path.is_dir()
    )


def expected_files():
    umbrella = (SOURCE / "include/qrv/qrv.h").read_text(encoding="utf-8")
    headers = ["qrv/qrv.h"] + re.findall(r'^#include "(qrv/.*)"$', umbrella, re.M)
    major = VERSION.split(".", maxsplit=1)[0]
    package = ["qrvConfig", "qrvConfigVersion", "qrvTargets", "qrvTargets-release"]
    return sorted(
        ["bin/qrv", "bin/qrv-watchdog", f"{LIBDIR}/pkgconfig/qrv.pc", f"{LIBDIR}/libqrv.so -> libqrv.so.{major}",
         f"{LIBDIR}/libqrv.so.{major} -> libqrv.so.{VERSION}", f"{LIBDIR}/libqrv.so.{VERSION}"]
        + [f"include/{header}" for header in headers]
        + [f"{LIBDIR}/cmake/qrv/{name}.cmake" for name in package]
    )


def mentioning(tree, text):
    paths = (path for path in tree.rglob("*") if path.is_file())
    return sorted(str(path.relative_to(tree)) for path in paths if os.fsencode(text) in path.read_bytes())


def configure(tree, build, *options, source=HERE):
    return run("cmake", "-G", "Ninja", "-S", source, "-B", build, f"-DCMAKE_PREFIX_PATH={tree}",
               f"-DCMAKE_CXX_COMPILER={COMPILER}", f"-DCMAKE_CXX_FLAGS={WARNINGS}", *options)


class Install(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        scratch = tempfile.TemporaryDirectory()
        cls.addClassCleanup(scratch.cleanup)
        cls.scratch = pathlib.Path(scratch.name).resolve()
        cls.first = cls.scratch / "first"
        cls.tree = cls.scratch / "moved" / "elsewhere"
        install(cls.first)
        cls.printed_before = cls.printed_by_cmake_consumer(cls.first, cls.scratch / "before")
        cls.tree.parent.mkdir()
        cls.first.rename(cls.tree)

    @staticmethod
    def printed_by_cmake_consumer(tree, build):
        result = configure(tree, build)
        if result.returncode != 0:
            raise AssertionError(result.stdout)
        cache = (build / "CMakeCache.txt").read_text(encoding="utf-8")
        found = re.search(r"^qrv_DIR:PATH=(.*)$", cache, re.M)[1]
        if found != f"{tree}/{LIBDIR}/cmake/qrv":
            raise AssertionError(f"found another package: {found}")
        done("cmake", "--build", build)
        return done("./consumer", folder=build)

    def assert_consumer(self, printed):
        self.assertEqual(printed, (HERE / "consumer.out").read_text(encoding="utf-8"))

    def test_exactly_the_expected_files(self):
        self.assertEqual(files(self.tree), expected_files())

    def test_the_same_files_with_destdir(self):
        install("/opt/qrv", DESTDIR=str(self.scratch / "staged"))
        staged = self.scratch / "staged/opt/qrv"
        self.assertEqual(files(self.scratch / "staged"), [f"opt/qrv/{name}" for name in expected_files()])
        for name in ("bin/qrv", f"{LIBDIR}/pkgconfig/qrv.pc", f"{LIBDIR}/cmake/qrv/qrvTargets-release.cmake"):
            self.assertEqual((staged / name).read_bytes(), (self.tree / name).read_bytes(), name)

    def test_no_file_tells_where_it_was_made_or_first_installed(self):
        self.assertIn("bin/qrv", mentioning(self.tree, "$ORIGIN/"))  # shows that the search finds text
        for folder in (SOURCE, BUILD, self.first):
            self.assertEqual(mentioning(self.tree, f"{folder}/"), [], folder)
            self.assertEqual(mentioning(self.tree, f"{folder}\0"), [], folder)

    def test_the_tool(self):
        file = SOURCE / "examples/device.attr"
        self.assertEqual(done(self.tree / "bin/qrv", "get", file, "bus/baud"), "115200\n")
        linked = done("ldd", self.tree / "bin/qrv")
        self.assertIn(str(self.tree), os.path.realpath(re.search(r"libqrv\.so\.\d+ => (\S+)", linked)[1]))

    def test_libraries_are_not_searched_where_other_users_can_write(self):
        done(sys.executable, SOURCE / "scripts/check_run_paths.py", self.tree)

    def test_a_cmake_consumer_where_it_was_installed(self):
        self.assert_consumer(self.printed_before)

    def test_a_cmake_consumer_after_the_move(self):
        self.assert_consumer(self.printed_by_cmake_consumer(self.tree, self.scratch / "after"))

    def test_the_example_module_builds_with_the_package_alone(self):
        build = self.scratch / "colour"
        result = configure(self.tree, build, source=SOURCE / "examples/modules/colour")
        self.assertEqual(result.returncode, 0, result.stdout)
        done("cmake", "--build", build)
        done("cmake", "--install", build, "--prefix", self.scratch / "modules")
        done(sys.executable, SOURCE / "scripts/check_run_paths.py", build, self.scratch / "modules")
        self.assertEqual(files(self.scratch / "modules"), ["include/colour/colour.h", f"{LIBDIR}/qrv/modules/colour.so"])

    def test_other_versions_are_refused(self):
        for wanted in ("2", "1.1", "0.9"):
            with self.subTest(wanted):
                result = configure(self.tree, self.scratch / f"wanted-{wanted}", f"-DQRV_WANTED={wanted}")
                self.assertNotEqual(result.returncode, 0)
                self.assertIn("is compatible with requested version", " ".join(result.stdout.split()))
                self.assertIn(f"version: {VERSION}", result.stdout)

    def test_a_consumer_by_pkg_config(self):
        build = self.scratch / "by-pkg-config"
        build.mkdir()

        def ask(*options):
            return shlex.split(done("pkg-config", *options, "qrv", PKG_CONFIG_PATH=f"{self.tree}/{LIBDIR}/pkgconfig"))

        self.assertEqual(ask("--modversion"), [VERSION])
        common = [COMPILER, "-std=c++20", *WARNINGS.split(), *ask("--cflags")]
        runpath = f"-Wl,-rpath,{self.tree}/{LIBDIR}"
        done(*common, HERE / "consumer.cpp", "-o", build / "consumer", *ask("--libs"), runpath)
        done(*common, *ask("--variable=module_cflags"), "-fPIC", "-shared", HERE / "greeting.cpp",
             "-o", build / "greeting.so", *ask("--libs"), runpath)
        self.assert_consumer(done("./consumer", folder=build))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
