#!/usr/bin/env python3
"""Configures the project in ways that no preset covers."""
import pathlib
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]


def configured(*options):
    """The build.ninja of a fresh configuration."""
    with tempfile.TemporaryDirectory() as folder:
        result = subprocess.run(
            ["cmake", "-G", "Ninja", "-S", str(ROOT), "-B", folder, *options],
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False,
        )
        if result.returncode != 0:
            raise AssertionError(result.stdout)
        return (pathlib.Path(folder) / "build.ninja").read_text(encoding="utf-8")


class Build(unittest.TestCase):
    def test_a_build_without_tests_needs_no_test_package(self):
        absent = [f"-DCMAKE_DISABLE_FIND_PACKAGE_{name}=ON" for name in ("GTest", "Python3")]
        rules = configured("-DBUILD_TESTING=OFF", *absent)
        self.assertIn("libqrv.so", rules)
        self.assertIn("bin/tour", rules)
        self.assertNotIn("test_core", rules)

    def test_warnings_are_errors_in_presets_only(self):
        self.assertNotIn("-Werror", configured("-DBUILD_TESTING=OFF"))
        with tempfile.TemporaryDirectory() as folder:
            for preset in ("dev", "release"):
                with self.subTest(preset):
                    done = subprocess.run(
                        ["cmake", "--preset", preset, "-B", f"{folder}/{preset}", "-DBUILD_TESTING=OFF"],
                        cwd=ROOT, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False,
                    )
                    self.assertEqual(done.returncode, 0, done.stdout)
                    rules = (pathlib.Path(folder) / preset / "build.ninja").read_text(encoding="utf-8")
                    self.assertIn("-Werror", rules)


if __name__ == "__main__":
    unittest.main()
