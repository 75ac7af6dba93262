// `fmt -i`: the file is replaced or left unchanged.

#include "tests/tool/tool_run.h"

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>

using tool_test::cRun;
using tool_test::give_up_rights_over_files;

namespace {

class ToolFmtInPlace : public tool_test::Tool {
  protected:
    cRun in_place(std::vector<std::string> more = {}) const {
        more.insert(more.begin(), {"fmt", "-i", "f"});
        return run(std::move(more));
    }
    struct stat status(std::string const &name) const {
        struct stat info {};
        EXPECT_EQ(::lstat(path(name).c_str(), &info), 0);
        return info;
    }
    size_t files() const {
        return static_cast<size_t>(std::distance(std::filesystem::directory_iterator(folder_), {}));
    }
};

cRun const silent{0, "", ""};
std::string const refused =
    "f: error: not written: data would be lost; --force writes the file anyway\n";

TEST_F(ToolFmtInPlace, replaces_the_file_and_leaves_no_other_file) {
    write("f", "// head\n{a=1}");
    ino_t const before = status("f").st_ino;
    EXPECT_EQ(in_place(), silent);
    EXPECT_EQ(read("f"), "// head\n{a= 1; }\n");
    EXPECT_NE(status("f").st_ino, before) << "a new file is renamed to the old name";
    EXPECT_EQ(files(), 1u);
}

TEST_F(ToolFmtInPlace, continues_with_the_next_file_after_a_refused_one) {
    write("a", "[1]");
    write("f", "[1] x");
    write("c", "[2]");
    EXPECT_EQ(run({"fmt", "--in-place", "a", "f", "nowhere", "c"}),
              (cRun{2, "",
                    "f:1:5: error: text after the first value would be lost\n" + refused +
                        "nowhere: error: cannot read: No such file or directory\n"}));
    EXPECT_EQ(read("a"), "[1, ]\n");
    EXPECT_EQ(read("f"), "[1] x");
    EXPECT_EQ(read("c"), "[2, ]\n");
    EXPECT_EQ(files(), 3u);
}

TEST_F(ToolFmtInPlace, preserves_the_mode) {
    for (mode_t const mode : {0600u, 0644u, 0755u, 0640u, 0444u}) {
        write("g", "[1]");
        ::chmod(path("g").c_str(), mode);
        bool const writable = (mode & 0200) || ::geteuid() == 0;
        EXPECT_EQ(run({"fmt", "-i", "g"}).status, writable ? 0 : 2);
        EXPECT_EQ(status("g").st_mode & 07777, mode);
        EXPECT_EQ(read("g"), writable ? "[1, ]\n" : "[1]");
        std::filesystem::remove(path("g"));
    }
}

TEST_F(ToolFmtInPlace, does_not_write_a_formatted_file) {
    write("f", "[1, ]\n");
    timespec const long_ago[2] = {{1000, 0}, {2000, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path("f").c_str(), long_ago, 0), 0);
    struct stat const before = status("f");
    EXPECT_EQ(in_place(), silent);
    struct stat const after = status("f");
    EXPECT_EQ(after.st_ino, before.st_ino);
    EXPECT_EQ(after.st_mtim.tv_sec, 2000);
    EXPECT_EQ(after.st_ctim.tv_sec, before.st_ctim.tv_sec);
    EXPECT_EQ(after.st_ctim.tv_nsec, before.st_ctim.tv_nsec);
}

TEST_F(ToolFmtInPlace, follows_a_symbolic_link_and_preserves_it) {
    std::filesystem::create_directory(path("there"));
    write("there/g", "[1]");
    std::filesystem::create_symlink("there/g", path("f"));
    EXPECT_EQ(in_place(), silent);
    EXPECT_TRUE(S_ISLNK(status("f").st_mode));
    EXPECT_TRUE(S_ISREG(status("there/g").st_mode));
    EXPECT_EQ(read("there/g"), "[1, ]\n");
}

TEST_F(ToolFmtInPlace, preserves_hard_links) {
    write("f", "{a=1; b=[2]}");
    std::filesystem::create_hard_link(path("f"), path("g"));
    EXPECT_EQ(in_place(), silent);
    EXPECT_EQ(read("g"), "{a= 1; b= [2, ]; }\n");
    EXPECT_EQ(status("f").st_ino, status("g").st_ino);
    EXPECT_EQ(status("f").st_nlink, 2u);
}

TEST_F(ToolFmtInPlace, works_in_a_folder_where_no_file_can_be_created) {
    write("f", "[1]");
    ino_t const before = status("f").st_ino;
    ::chmod(folder_.c_str(), 0555);
    EXPECT_EQ(run({"fmt", "-i", "f"}, {.prepare = give_up_rights_over_files}), silent);
    EXPECT_EQ(read("f"), "[1, ]\n");
    EXPECT_EQ(status("f").st_ino, before);
}

TEST_F(ToolFmtInPlace, refuses_a_read_only_file) {
    write("f", "[1]");
    ::chmod(path("f").c_str(), 0444);
    EXPECT_EQ(run({"fmt", "-i", "f"}, {.prepare = give_up_rights_over_files}),
              (cRun{2, "", "f: error: cannot write: Permission denied; the file is unchanged\n"}));
    EXPECT_EQ(read("f"), "[1]");
    EXPECT_EQ(files(), 1u);
}

TEST_F(ToolFmtInPlace, never_refuses_because_of_comments) {
    write("f", "[1 /* a */ , // b\n2] // x");
    EXPECT_EQ(in_place(), silent);
    EXPECT_EQ(read("f"), "[\n  1, /* a */ // b\n  2,\n] // x\n");
    EXPECT_EQ(in_place(), silent);
    EXPECT_EQ(files(), 1u);
}

TEST_F(ToolFmtInPlace, refuses_to_lose_text_after_the_value_unless_forced) {
    write("f", "[1] [2]");
    std::string const reported = "f:1:5: error: text after the first value would be lost\n";
    EXPECT_EQ(in_place(), (cRun{2, "", reported + refused}));
    EXPECT_EQ(read("f"), "[1] [2]");
    EXPECT_EQ(in_place({"--force"}), (cRun{0, "", reported}));
    EXPECT_EQ(read("f"), "[1, ]\n");
}

TEST_F(ToolFmtInPlace, refuses_when_a_value_cannot_be_written_unless_forced) {
    std::string const text = "{P= attlist(x= attspec(default= 1)); d= {y= P(x= 2)}; "
                             "P= attlist(w= attspec(default= 1))}";
    write("f", text);
    std::string const reported = "f: error: Value cannot be written, path : /d/y [0x40000001]\n"
                                 "f:1:5: error: this value would be lost [duplicate-key]\n"
                                 "f:1:55: note: its key is repeated here\n";
    EXPECT_EQ(in_place(), (cRun{2, "", reported + refused}));
    EXPECT_EQ(read("f"), text);
    EXPECT_EQ(in_place({"--force"}), (cRun{0, "", reported}));
    EXPECT_EQ(read("f"), "{\n  P= attlist(\n      w= attspec(default=1; );\n  );\n  d= {};\n}\n");
}

TEST_F(ToolFmtInPlace, refuses_lost_digits_of_plain_text_unless_forced) {
    write("f", "[0.1234567]");
    std::string const reported = "f: error: the new text would not read as the same value: digits, "
                                 "bits or strings would differ\n";
    EXPECT_EQ(in_place({"--canonical"}), (cRun{2, "", reported + refused}));
    EXPECT_EQ(read("f"), "[0.1234567]");
    EXPECT_EQ(in_place({"--canonical", "--force"}), (cRun{0, "", reported}));
    EXPECT_EQ(read("f"), "[0.123457, ]");
}

TEST_F(ToolFmtInPlace, never_writes_plain_text_that_reads_differently) {
    write("f", "['x\\\ny']");
    EXPECT_EQ(in_place({"--canonical", "--force"}),
              (cRun{2, "",
                    "f: error: the new text would not read as the same value: digits, bits or "
                    "strings would differ\n"
                    "f: error: not written: the new text would change when it is read and written "
                    "again\n"}));
    EXPECT_EQ(read("f"), "['x\\\ny']");
}

TEST_F(ToolFmtInPlace, leaves_a_file_with_errors_even_if_forced) {
    write("f", "{a=1 b=2}");
    EXPECT_EQ(in_place({"--force"}),
              (cRun{2, "",
                    "f:1:4: error: Missing delimiter after value: 1 [0x40000002]\n"
                    "f:1:5: note: a ; is missing here\n"}));
    EXPECT_EQ(read("f"), "{a=1 b=2}");
}

TEST_F(ToolFmtInPlace, refuses_the_standard_input) {
    EXPECT_EQ(run({"fmt", "-i", "-"}, {.input = "[1]"}),
              (cRun{2, "", "-: error: not written: it is the standard input\n"}));
}

// The new text exceeds this limit on the length of files. An instrumented tool writes files when it
// ends, for which the limit is large enough.
std::string const too_long = "['" + std::string(2000000, 'x') + "']";
void limit_files() {
    rlimit const limit{1000000, 1000000};
    if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) ::_exit(126);
}

TEST_F(ToolFmtInPlace, leaves_the_file_when_there_is_no_space_for_the_new_one) {
    write("f", too_long);
    auto const no_signal = [] {
        if (::signal(SIGXFSZ, SIG_IGN) == SIG_ERR) ::_exit(126);
        limit_files();
    };
    EXPECT_EQ(run({"fmt", "-i", "f"}, {.prepare = no_signal}),
              (cRun{2, "", "f: error: cannot write: File too large; the file is unchanged\n"}));
    EXPECT_EQ(read("f"), too_long);
    EXPECT_EQ(files(), 1u);
}

TEST_F(ToolFmtInPlace, a_limit_on_the_length_of_files_does_not_end_the_tool) {
    write("f", too_long);
    EXPECT_EQ(
        run({"fmt", "-i", "f"}, {.prepare = limit_files}), // the default action of SIGXFSZ applies
        (cRun{2, "", "f: error: cannot write: File too large; the file is unchanged\n"}));
    EXPECT_EQ(read("f"), too_long);
    EXPECT_EQ(files(), 1u);
}

TEST_F(ToolFmtInPlace, refuses_anything_but_a_plain_file) {
    ASSERT_EQ(::mkfifo(path("f").c_str(), 0600), 0);
    std::thread writer([this] { write("f", "[1]"); });
    EXPECT_EQ(in_place({"--force"}),
              (cRun{2, "", "f: error: not written: it is not a regular file\n"}));
    writer.join();
    EXPECT_EQ(files(), 1u);
}

TEST_F(ToolFmtInPlace, a_refused_hard_link_is_unchanged_under_both_names) {
    write("f", too_long);
    std::filesystem::create_hard_link(path("f"), path("g"));
    EXPECT_EQ(run({"fmt", "-i", "f"}, {.prepare = limit_files}).status, 2);
    EXPECT_EQ(read("f"), too_long);
    EXPECT_EQ(read("g"), too_long);
}

TEST_F(ToolFmtInPlace, shows_a_name_with_a_line_feed_on_one_line) {
    write("a\nb", "[1]");
    EXPECT_EQ(run({"fmt", "-i", "a\nb"}), silent);
    EXPECT_EQ(read("a\nb"), "[1, ]\n");
    write("a\nb", "[1] x");
    EXPECT_EQ(
        run({"fmt", "-i", "a\nb"}),
        (cRun{
            2, "",
            "a\\x0ab:1:5: error: text after the first value would be lost\n"
            "a\\x0ab: error: not written: data would be lost; --force writes the file anyway\n"}));
    EXPECT_EQ(read("a\nb"), "[1] x");
}

TEST_F(ToolFmtInPlace, does_not_need_the_standard_output) {
    write("f", "[1]");
    auto const close_all = [] {
        for (int descriptor : {0, 1, 2}) ::close(descriptor);
    };
    EXPECT_EQ(run({"fmt", "-i", "f"}, {.prepare = close_all}), silent);
    EXPECT_EQ(read("f"), "[1, ]\n");
}

} // namespace
