#!/usr/bin/env python3
"""Runs .ci/run in a folder whose ./dev and ctest only print what they are called with."""
import os
import re
import shutil
import subprocess

from checks_test import SCRIPTS, Tree

SHOW = '#!/bin/sh\necho "called: ${0##*/} $* shuffle=$GTEST_SHUFFLE seed=$GTEST_RANDOM_SEED"\n'


class Ci(Tree):
    def setUp(self):
        super().setUp()
        self.write("dev", SHOW).chmod(0o755)
        self.write("bin/ctest", SHOW).chmod(0o755)
        (self.root / ".ci").mkdir()
        shutil.copy(SCRIPTS.parent / ".ci/run", self.root / ".ci/run")

    def run_ci(self, **variables):
        environment = {k: v for k, v in os.environ.items() if not k.startswith("GTEST_")}
        environment["PATH"] = f"{self.root}/bin:{environment['PATH']}"
        return subprocess.run(
            [self.root / ".ci/run"], env={**environment, **variables}, text=True, stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT, check=False,
        )

    def seed_of(self, result):
        self.assertEqual(result.returncode, 0, result.stdout)
        seed = re.search(r"^called: dev test shuffle=1 seed=(\d+)$", result.stdout, re.M)[1]
        self.assertIn(f"the order of the tests: GTEST_RANDOM_SEED={seed}\n", result.stdout)
        return int(seed)

    def test_the_tests_run_in_an_order_that_each_run_chooses(self):
        seeds = {self.seed_of(self.run_ci()) for _ in range(5)}
        self.assertGreater(len(seeds), 1)
        self.assertTrue(all(1 <= seed <= 99999 for seed in seeds), seeds)

    def test_a_given_seed_repeats_the_order(self):
        self.assertEqual(self.seed_of(self.run_ci(GTEST_RANDOM_SEED="99999")), 99999)

    def test_a_seed_that_gtest_would_refuse_is_refused(self):
        for seed in ("0", "100000", "x"):
            with self.subTest(seed):
                result = self.run_ci(GTEST_RANDOM_SEED=seed)
                self.assertEqual(result.returncode, 2)
                self.assertIn(f"GTEST_RANDOM_SEED is '{seed}'", result.stdout)
                self.assertNotIn("called:", result.stdout)

    def test_a_failed_step_makes_the_run_fail(self):
        self.write("dev", '#!/bin/sh\n[ "$1" != test ]\n')
        result = self.run_ci()
        self.assertEqual(result.returncode, 1)
        self.assertRegex(result.stdout, r"test +FAILED")


if __name__ == "__main__":
    import unittest

    unittest.main()
