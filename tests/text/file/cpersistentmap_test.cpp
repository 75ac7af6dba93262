// A map in a file: loading on first use, saving at the end, and the treatment of a damaged file.

#include "qrv/text/file/cpersistentmap.h"

#include "qrv/containers/cattr.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/read/creadreport.h"
#include "qrv/text/write/cwriter.h"
#include "tests/text/file/save_support.h"

#include <algorithm>
#include <type_traits>

using namespace save_test;

namespace {

std::string const signature = "// Platform Quorvanta(R), Attributes version 2.0\n"
                              "// by the Quorvanta developers\n"
                              "\n";

std::string const empty = "{\n}"; // a map that a program creates is written on many lines

class PersistentMap : public PersistentTest {
  protected:
    std::string const file_ = folder_.file("map");

    void put(std::string const &text) const { save_test::put(file_, text); }
    std::string bytes() const { return bytes_of(file_); }
    // Loads and saves without a change.
    void pass(bool keep_comments = false) const {
        cPersistentMap map("map", keep_comments);
        map.busmap();
    }
};

class PersistentMapEdge : public PersistentMap {};
class PersistentMapDamaged : public PersistentMap {};

static_assert(!std::is_copy_constructible_v<cPersistentMap>);
static_assert(!std::is_copy_assignable_v<cPersistentMap>);
static_assert(!std::is_move_constructible_v<cPersistentMap>);
static_assert(!std::is_move_assignable_v<cPersistentMap>);
static_assert(std::has_virtual_destructor_v<cPersistentMap>);

} // namespace

// --- loading ---

TEST_F(PersistentMap, the_constructor_opens_no_file_and_an_unused_map_is_not_written) {
    put("{a=1}");
    {
        cOsFaults const counter(-1, 0);
        cPersistentMap const map("map", true);
        EXPECT_EQ(map.name(), "map");
        EXPECT_EQ(map.map(), nullptr);
        EXPECT_TRUE(map.keep_comments());
        EXPECT_EQ(counter.calls(), 0);
    }
    EXPECT_EQ(bytes(), "{a=1}");
    { cPersistentMap const map("new", false); }
    EXPECT_EQ(folder_.names(), "map");
    EXPECT_EQ(messages(), "");
}

TEST_F(PersistentMap, a_map_without_a_file_is_empty_and_creates_one) {
    {
        cPersistentMap map("map", false);
        cMapObj &entries = map.busmap();
        EXPECT_EQ(entries.size(), 0);
        EXPECT_EQ(&entries, map.map().get());
        EXPECT_EQ(map.name(), file_);
        EXPECT_EQ(folder_.names(), "");
    }
    EXPECT_EQ(bytes(), signature + empty);
    EXPECT_EQ(folder_.names(), "map");
    EXPECT_EQ(messages(), "");
}

TEST_F(PersistentMap, stored_values_are_loaded_again) {
    {
        cPersistentMap map("map", false);
        map.busmap()["a"] = cat::of(7);
        map.busmap()["b"] = cat::of("text");
    }
    EXPECT_EQ(bytes(), signature + "{\n  a= 7;\n  b= text;\n}");
    cPersistentMap map("map", false);
    EXPECT_EQ(cat::as_text(map.busmap().getattrp("a")), "7");
    EXPECT_EQ(cat::as_text(map.busmap().getattrp("b")), "text");
}

TEST_F(PersistentMap, the_file_is_read_once_and_its_folder_prepended_once) {
    put("{a=1}");
    cPersistentMap map("map", false);
    cMapObj &first = map.busmap();
    put("{a=2}");
    EXPECT_EQ(&map.busmap(), &first);
    EXPECT_EQ(map.name(), file_);
    EXPECT_EQ(cat::as_text(first.getattrp("a")), "1");
}

TEST_F(PersistentMap, the_signature_is_not_repeated) {
    put("{a=1}");
    for (int i = 0; i < 3; ++i) {
        pass(true);
        EXPECT_EQ(bytes(), signature + "{a= 1; }");
    }
    EXPECT_EQ(folder_.names(), "map");
}

TEST_F(PersistentMap, comments_are_preserved_on_request) {
    std::string const text = "{ // head\n  a= 1; // one\n  b= 2;\n}";
    put(text);
    pass(true);
    EXPECT_EQ(bytes(), signature + "{ // head\n  a= 1; // one\n  b= 2;\n}");
    pass(false);
    EXPECT_EQ(bytes(), signature + "{\n  a= 1;\n  b= 2;\n}");
    EXPECT_EQ(folder_.names(), "map")
        << "a file with a comment that is not kept does not count as damaged";
}

TEST_F(PersistentMap, a_program_without_a_folder_has_its_file_in_the_working_folder) {
    set_program("program");
    std::filesystem::path const before = std::filesystem::current_path();
    std::filesystem::current_path(folder_.path());
    {
        cPersistentMap map("map", false);
        map.busmap();
        EXPECT_EQ(map.name(), "map");
    }
    std::filesystem::current_path(before);
    EXPECT_EQ(bytes(), signature + empty);
}

TEST_F(PersistentMap, the_map_outlives_its_file) {
    cRef<cMapObj> kept;
    {
        cPersistentMap map("map", false);
        map.busmap()["a"] = cat::of(1);
        kept = map.map();
    }
    EXPECT_EQ(cat::as_text(kept->getattrp("a")), "1");
}

// --- edge cases ---

TEST_F(PersistentMapEdge, an_empty_name_becomes_the_folder_and_loads_without_a_message) {
    std::string reported;
    for (char const *name : {"", static_cast<char const *>(nullptr)}) {
        cPersistentMap map(name, false);
        EXPECT_EQ(map.busmap().size(), 0);
        EXPECT_EQ(map.name(), folder_.file(""));
        EXPECT_EQ(messages(), reported);
        reported = "Cannot open file for write: " + folder_.file("") + "\n";
    }
    EXPECT_EQ(messages(), reported);
    EXPECT_EQ(folder_.names(), "");
    set_program("program");
    {
        cPersistentMap map("", false);
        map.busmap();
        EXPECT_EQ(map.name(), "");
    }
    EXPECT_EQ(messages(), "") << "a map without a name has no file";
}

TEST_F(PersistentMapEdge, saving_removes_the_read_only_mark) {
    put("{a=1}");
    ASSERT_EQ(::chmod(file_.c_str(), 0464), 0);
    {
        cPersistentMap map("map", false);
        map.busmap();
        EXPECT_EQ(mode_of(file_), 0464u);
    }
    EXPECT_EQ(mode_of(file_), 0664u);
    EXPECT_EQ(bytes(), signature + "{a= 1; }");
    EXPECT_EQ(messages(), "");
}

TEST_F(PersistentMap, an_unused_map_does_not_remove_the_read_only_mark) {
    put("{a=1}");
    ASSERT_EQ(::chmod(file_.c_str(), 0444), 0);
    { cPersistentMap const map("map", false); }
    EXPECT_EQ(mode_of(file_), 0444u);
}

TEST_F(PersistentMap, a_folder_keeps_its_mode) {
    std::filesystem::create_directory(file_);
    ASSERT_EQ(::chmod(file_.c_str(), 0555), 0);
    pass();
    EXPECT_EQ(mode_of(file_), 0555u);
    EXPECT_EQ(messages(), "Cannot open file for write: " + file_ + "\n");
    EXPECT_EQ(folder_.names(), "map");
}

// --- damaged files ---

namespace {
// A file's text, the text that the map writes then, and the messages, with %F for the file's name.
struct cDamage {
    char const *text;
    char const *saved;
    char const *reported;
};
} // namespace

TEST_F(PersistentMapDamaged, a_file_that_would_lose_data_is_copied_first) {
    for (auto const &[text, saved, reported] : std::vector<cDamage>{
             {"{a=1; b 2; c=3}", "{a= 1; 0= 2; c= 3; }",
              "%F (1) Missing delimiter after: b\n%F (1) Pattern 'key =' is missed \n"},
             {"{a=nosuch(1); b=2}", "{\n  b= 2;\n}",
              "%F (1) ( /a ): Value with unknown type='nosuch\nCannot insert key =a\n"},
             {"{a=1;", "{a= 1; }", "%F (1) Map is not closed by '}'\n"},
             {"{", "{\n}", ""}, // no message: a single bracket
             {"<", "{\n}", ""}, // the same
             {"{}}", "{}", ""}, // the reader does not read the text after the value
             {"{a=1; } b=2; }", "{a= 1; }", ""},
             {"{a=1}; {b=2}", "{a= 1; }", ""},
             {"}", "{\n}", ""}, // a closing bracket without an opening one
             {"[1; 2]", "{\n}", ""},
             {"5", "{\n}", ""},
             {"\"text\"", "{\n}", ""}}) {
        put(text);
        pass();
        std::string expected = reported;
        for (std::size_t at; (at = expected.find("%F")) != std::string::npos;)
            expected.replace(at, 2, file_);
        EXPECT_EQ(messages(), expected) << text;
        EXPECT_EQ(bytes(), signature + saved) << text;
        EXPECT_EQ(bytes_of(file_ + ".bad"), text);
        EXPECT_EQ(folder_.names(), "map map.bad");
        std::filesystem::remove(file_ + ".bad");
    }
}

TEST_F(PersistentMapDamaged, bytes_that_end_the_input_count_as_damage) {
    for (std::string const &text :
         {std::string(100, '\0'), std::string("\xff{a=1}"), std::string("{a=1}\0\0", 7),
          std::string("{\0", 2), std::string("{a=1;}\x80")}) {
        put(text);
        pass();
        EXPECT_EQ(bytes_of(file_ + ".bad"), text);
        std::filesystem::remove(file_ + ".bad");
        messages();
    }
}

TEST_F(PersistentMapDamaged, an_undamaged_file_is_not_copied) {
    for (char const *text :
         {"{}", "{a=1}", " { a = 1 } ", "{a=1};", "{a=1},\n// end\n", "{a=1} /* end */\n\n", "",
          "\n", "// nothing\n", "/* nothing */", "{a=\"}\"}", "{a={}; b=<>; c=[]}\r\n"}) {
        put(text);
        pass();
        pass(true);
        EXPECT_EQ(folder_.names(), "map") << text;
        EXPECT_EQ(messages(), "") << text;
    }
}

TEST_F(PersistentMapDamaged, a_copy_is_never_overwritten_and_no_damaged_file_is_lost) {
    for (int i = 1; i <= 3; ++i) {
        put("{ a= " + std::to_string(i));
        pass();
        messages();
        EXPECT_EQ(bytes(), signature + "{a= " + std::to_string(i) + "; }");
    }
    EXPECT_EQ(folder_.names(), "map map.bad map.bad2 map.bad3");
    EXPECT_EQ(bytes_of(file_ + ".bad"), "{ a= 1");
    EXPECT_EQ(bytes_of(file_ + ".bad2"), "{ a= 2");
    EXPECT_EQ(bytes_of(file_ + ".bad3"), "{ a= 3");
}

TEST_F(PersistentMapDamaged, the_same_damaged_file_is_copied_once) {
    for (int i = 0; i < 3; ++i) {
        put("[1]");
        pass();
        EXPECT_EQ(folder_.names(), "map map.bad");
    }
    save_test::put(file_ + ".bad", "other");
    put("[1]");
    pass();
    EXPECT_EQ(folder_.names(), "map map.bad map.bad2");
    EXPECT_EQ(bytes_of(file_ + ".bad"), "other");
}

TEST_F(PersistentMapDamaged, anything_with_the_name_of_a_copy_is_left_alone) {
    std::filesystem::create_directory(file_ + ".bad");
    std::filesystem::create_symlink("nowhere", file_ + ".bad2");
    std::filesystem::create_symlink("map", file_ + ".bad3"); // a link to the file itself
    put("[1]");
    pass();
    EXPECT_EQ(folder_.names(), "map map.bad map.bad2 map.bad3 map.bad4");
    EXPECT_TRUE(std::filesystem::is_symlink(file_ + ".bad2"));
    EXPECT_TRUE(std::filesystem::is_symlink(file_ + ".bad3"));
    EXPECT_EQ(bytes_of(file_ + ".bad4"), "[1]");
    EXPECT_EQ(bytes(), signature + empty);
    EXPECT_EQ(messages(), "");
}

TEST_F(PersistentMapDamaged, the_file_is_not_replaced_when_all_names_are_in_use) {
    for (int i = 1; i <= 98; ++i)
        save_test::put(file_ + ".bad" + (i == 1 ? "" : std::to_string(i)), "x");
    put("[1]");
    pass();
    EXPECT_EQ(bytes_of(file_ + ".bad99"), "[1]");
    EXPECT_EQ(bytes(), signature + empty);
    EXPECT_EQ(messages(), "");
    put("[2]");
    pass();
    EXPECT_EQ(bytes(), "[2]");
    EXPECT_EQ(messages(), "Cannot keep damaged file: " + file_ + "\n");
    EXPECT_EQ(bytes_of(file_ + ".bad99"), "[1]");
}

TEST_F(PersistentMapDamaged, a_copy_has_the_permissions_of_its_file) {
    for (mode_t const mode : {0600u, 0640u, 0755u}) {
        put("[1]");
        ASSERT_EQ(::chmod(file_.c_str(), mode), 0);
        pass();
        EXPECT_EQ(mode_of(file_ + ".bad"), mode);
        std::filesystem::remove(file_ + ".bad");
        std::filesystem::remove(file_);
    }
}

TEST_F(PersistentMapDamaged, a_file_with_two_names_keeps_both_and_is_copied) {
    put("[1]");
    std::filesystem::create_hard_link(file_, folder_.file("other"));
    pass();
    EXPECT_EQ(bytes_of(file_ + ".bad"), "[1]");
    EXPECT_EQ(bytes_of(folder_.file("other")), signature + empty);
    EXPECT_EQ(std::filesystem::hard_link_count(file_), 2u);
}

TEST_F(PersistentMapDamaged, the_copy_of_a_linked_file_is_beside_the_link) {
    std::filesystem::create_directory(folder_.file("sub"));
    save_test::put(folder_.file("sub/map"), "[1]");
    std::filesystem::create_symlink("sub/map", file_);
    pass();
    EXPECT_TRUE(std::filesystem::is_symlink(file_));
    EXPECT_EQ(bytes_of(folder_.file("sub/map")), signature + empty);
    EXPECT_EQ(bytes_of(file_ + ".bad"), "[1]");
    EXPECT_EQ(folder_.names(), "map map.bad sub");
}

TEST_F(PersistentMapDamaged, a_removed_damaged_file_needs_no_copy) {
    put("[1]");
    {
        cPersistentMap map("map", false);
        map.busmap();
        std::filesystem::remove(file_);
    }
    EXPECT_EQ(folder_.names(), "map");
    EXPECT_EQ(messages(), "");
}

TEST_F(PersistentMapDamaged, the_copy_has_the_content_at_the_time_of_saving) {
    put("[1]");
    {
        cPersistentMap map("map", false);
        map.busmap();
        put("[2]");
    }
    EXPECT_EQ(bytes_of(file_ + ".bad"), "[2]");
}

TEST_F(PersistentMapDamaged, a_file_system_without_exclusive_rename_creates_the_copy_by_a_link) {
    for (int const error : {EINVAL, ENOSYS, ENOTSUP}) {
        static int failure;
        failure = error;
        cat::os.rename_new = [](char const *, char const *) {
            errno = failure;
            return -1;
        };
        put("[1]");
        pass();
        EXPECT_EQ(bytes_of(file_ + ".bad"), "[1]");
        put("[2]");
        pass();
        EXPECT_EQ(bytes_of(file_ + ".bad2"), "[2]");
        EXPECT_EQ(folder_.names(), "map map.bad map.bad2");
        EXPECT_EQ(messages(), "");
        std::filesystem::remove(file_ + ".bad");
        std::filesystem::remove(file_ + ".bad2");
    }
}

// --- handlers that throw ---

TEST_F(PersistentMap, an_exception_of_a_handler_loads_nothing_and_writes_nothing) {
    std::string const text = "{a=nosuch(1); b=2}";
    put(text);
    cErrHandler const before = cat::errhandler();
    cat::errhandler().throw_mask(0xFFFFFFFF);
    {
        cPersistentMap map("map", false);
        for (int i = 0; i < 2; ++i) {
            EXPECT_THROW(map.busmap(), cErr);
            EXPECT_EQ(map.name(), file_);
            EXPECT_EQ(map.map(), nullptr);
        }
    }
    EXPECT_EQ(bytes(), text);
    EXPECT_EQ(folder_.names(), "map");
    {
        cPersistentMap map("map", false);
        EXPECT_THROW(map.busmap(), cErr);
        cat::errhandler() = before;
        EXPECT_EQ(cat::as_text(map.busmap().getattrp("b")), "2");
    }
    EXPECT_EQ(bytes_of(file_ + ".bad"), text);
}

namespace {
bool throwing_write(cObj &, objref &) { throw 5; }
} // namespace

TEST_F(PersistentMap, an_exception_while_saving_is_caught_and_the_file_stays_intact) {
    put("{a=1}");
    {
        cPersistentMap map("map", false);
        map.busmap().getattrp("a")->set_omember("write", ::make<cExeMember>(throwing_write));
    }
    EXPECT_EQ(bytes(), "{a=1}");
    EXPECT_EQ(folder_.names(), "map");
}

TEST_F(PersistentMap, is_saved_while_an_exception_propagates) {
    try {
        cPersistentMap map("map", false);
        map.busmap()["a"] = cat::of(1);
        throw 5;
    } catch (int) {
        EXPECT_EQ(bytes(), signature + "{\n  a= 1;\n}");
    }
}

TEST_F(PersistentMap, errors_go_to_an_existing_report) {
    put("{a=nosuch(1)}");
    cat::ReadReport const report;
    pass();
    EXPECT_EQ(report.count(), 2u);
    EXPECT_EQ(messages(), "");
    put("{a=1} {");
    pass();
    EXPECT_EQ(report.count(), 2u) << "errors in text after the value are not reported";
    EXPECT_EQ(folder_.names(), "map map.bad map.bad2");
}

TEST_F(PersistentMap, a_persistent_map_inside_another_saves_both) {
    {
        cPersistentMap outer("map", true);
        outer.busmap()["a"] = cat::of(1);
        cPersistentMap inner("inner", true);
        inner.busmap()["b"] = cat::of(2);
    }
    EXPECT_EQ(bytes(), signature + "{\n  a= 1;\n}");
    EXPECT_EQ(bytes_of(folder_.file("inner")), signature + "{\n  b= 2;\n}");
}
