#!/usr/bin/env python3
"""Commits with the hook that ./dev installs, in a new repository for each test."""
import os
import shutil
import subprocess

from checks_test import SCRIPTS, Tree


class Repository(Tree):
    def setUp(self):
        super().setUp()
        for name in ("dev", "scripts/commit-msg"):
            (self.root / name).parent.mkdir(exist_ok=True)
            shutil.copy(SCRIPTS.parent / name, self.root / name)
        self.environment = {k: v for k, v in os.environ.items() if not k.startswith("GIT_") and k != "CI"}
        self.environment |= {"HOME": str(self.root), "GIT_CONFIG_NOSYSTEM": "1"}
        for who in ("AUTHOR", "COMMITTER"):
            self.environment |= {f"GIT_{who}_NAME": "A", f"GIT_{who}_EMAIL": "a@example.org"}
        self.hook = self.root / ".git/hooks/commit-msg"

    def run_in(self, folder, *command, **variables):
        return subprocess.run(
            [str(word) for word in command], cwd=folder, env={**self.environment, **variables}, text=True,
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False,
        )

    def git(self, *arguments):
        result = self.run_in(self.root, "git", *arguments)
        self.assertEqual(result.returncode, 0, result.stdout)
        return result.stdout

    def repository(self):
        self.git("init", "-q", "-b", "main", "--template=")
        self.git("add", "-A")
        self.git("commit", "-q", "-m", "Begin")

    def dev(self, folder=None, **variables):
        """Every command installs the hook; this command needs nothing else."""
        result = self.run_in(folder or self.root, "bash", "./dev", "example", **variables)
        self.assertIn(result.returncode, (1, 2), result.stdout) # no example is named
        return result.stdout


class Messages(Repository):
    def setUp(self):
        super().setUp()
        self.repository()
        self.dev()

    def stage(self, lines, name="core/a.cpp"):
        self.write(name, "".join(f"int a{i};\n" for i in range(lines)))
        self.git("add", "-A")

    def commit(self, message):
        self.write("message", message)
        return self.run_in(self.root, "git", "commit", "-q", "--allow-empty", "--cleanup=strip", "-F", "message")

    def passes(self, message):
        result = self.commit(message)
        self.assertEqual((result.returncode, result.stdout), (0, ""))

    def refused(self, text, message):
        result = self.commit(message)
        self.assertEqual(result.returncode, 1, result.stdout)
        self.assertIn(f".git/COMMIT_EDITMSG:{text}", result.stdout)

    def test_a_subject_may_have_72_characters_but_not_73(self):
        self.passes("ä" * 72)
        self.refused("1: error: the subject has 73 characters: shorten it to 72", "ä" * 73)

    def test_a_body_needs_an_empty_line_before_it(self):
        self.passes("A\n\nBecause.\n")
        self.refused("2: error: the line after the subject is not empty", "A\nBecause.\n")

    def test_more_than_30_changed_lines_need_a_body(self):
        self.stage(30)
        self.passes("A")
        self.stage(31, "core/b.cpp")
        self.refused("1: error: 31 lines of the library or the tools change", "B")
        self.passes("B\n\nBecause.\n")

    def test_deleted_lines_count(self):
        self.stage(31)
        self.passes("A\n\nBecause.\n")
        self.stage(0)
        self.refused("1: error: 31 lines", "B")

    def test_public_headers_and_tools_count_as_product(self):
        for name in ("include/qrv/a.h", "tools/qrv/a.cpp", "text/read/a.h"):
            self.stage(31, name)
            self.refused("1: error: 31 lines", "A")
            self.git("rm", "-q", "-f", name)

    def test_other_files_do_not_count_as_product(self):
        for folder in ("tests/core", "docs", "examples", "bench", "fuzz", "scripts"):
            self.stage(50, f"{folder}/a.cpp")
        self.stage(50, "README.md")
        self.passes("A")

    def test_a_renamed_file_has_not_changed(self):
        self.stage(50)
        self.passes("A\n\nBecause.\n")
        (self.root / "util").mkdir()
        self.git("mv", "core/a.cpp", "util/a.cpp")
        self.passes("B")

    def test_lines_that_git_adds_below_are_not_a_body(self):
        self.stage(31)
        for trailer in ("Signed-off-by: A <a@example.org>", "Co-Authored-By: A", "Fixes: 12"):
            with self.subTest(trailer):
                self.refused("1: error: 31 lines", f"A\n\n{trailer}\n")

    def test_comments_and_what_lies_below_the_scissors_are_ignored(self):
        self.stage(31)
        message = self.write("message", f"\n# c\n\nA\n# {'c' * 80}\n\n# {'-' * 24} >8 {'-' * 24}\ndiff\n")
        result = self.run_in(self.root, "scripts/commit-msg", message)
        self.assertEqual(result.returncode, 1)
        self.assertIn("message:4: error: 31 lines", result.stdout)
        self.refused("3: error: the line after the subject", "A\n# c\nBecause.\n")

    def test_some_messages_are_always_accepted(self):
        self.stage(31)
        for begin in ("fixup! ", "squash! ", "amend! ", 'Revert "'):
            self.write("message", begin + "a" * 80)
            self.assertEqual(self.run_in(self.root, "scripts/commit-msg", "message").returncode, 0)
        self.refused("1: error: the subject has 80", "a" * 80)

    def test_a_merge_may_have_any_subject(self):
        self.git("checkout", "-q", "-b", "other")
        self.stage(31)
        self.passes("A\n\nBecause.\n")
        self.git("checkout", "-q", "main")
        self.passes("B")
        self.git("merge", "-q", "--no-ff", "-m", "m" * 80, "other")

    def test_the_first_commit_of_a_repository_is_checked(self):
        self.git("checkout", "-q", "--orphan", "fresh")
        self.stage(31)
        self.refused("1: error: 31 lines", "A")


class Installing(Repository):
    def test_the_hook_is_installed_once_for_all_worktrees(self):
        self.repository()
        self.assertIn("installed the check of commit messages: .git/hooks/commit-msg\n", self.dev())
        self.assertNotIn("installed", self.dev())
        self.git("worktree", "add", "-q", "build/second")
        second = self.root / "build/second"
        result = self.run_in(second, "git", "commit", "-q", "--allow-empty", "-m", "a" * 73)
        self.assertIn("the subject has 73 characters", result.stdout)
        self.hook.unlink()
        self.assertIn("installed", self.dev(second))
        self.assertTrue(self.hook.exists())

    def test_a_branch_without_the_check_is_not_checked(self):
        self.repository()
        self.dev()
        self.git("rm", "-q", "scripts/commit-msg")
        self.git("commit", "-q", "-m", "a" * 73)

    def test_an_existing_hook_is_preserved(self):
        self.repository()
        self.write(".git/hooks/commit-msg", "own")
        self.assertNotIn("installed", self.dev())
        self.assertEqual(self.hook.read_text(), "own")
        self.hook.unlink()
        self.hook.symlink_to("gone")
        self.assertNotIn("installed", self.dev())
        self.assertEqual(os.readlink(self.hook), "gone")

    def test_an_existing_folder_of_hooks_is_preserved(self):
        self.repository()
        (self.root / "own").mkdir()
        self.git("config", "core.hooksPath", "own")
        self.dev()
        self.assertEqual(list((self.root / "own").iterdir()), [])

    def test_the_hook_is_not_installed_by_ci(self):
        self.repository()
        self.dev(CI="true")
        self.assertFalse(self.hook.exists())

    def test_sources_may_be_without_a_repository_or_within_another(self):
        said = self.dev()
        inner = self.root / "third/qrv"
        inner.mkdir(parents=True)
        shutil.copy(self.root / "dev", inner / "dev")
        self.repository()
        self.assertEqual(self.dev(inner), said)
        self.assertFalse(self.hook.exists())


if __name__ == "__main__":
    import unittest

    unittest.main()
