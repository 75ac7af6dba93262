// Runs: which errors of a reading follow from which earlier error.

#include "core/cerr_object.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cmodifier.h"
#include "tests/support/fixture.h"
#include "tests/support/objects.h"
#include "tests/support/types.h"
#include "tests/text/read_support.h"

using reader_test::Reading;

namespace {

// A character for each entry: '-' for the first of a run, for others the index of the first one.
std::string runs_of(cat::ReadReport const &report) {
    std::string all;
    for (cat::ReadError const &error : report.entries())
        all += error.follows == cat::ReadError::none ? "-" : std::to_string(error.follows);
    return all;
}

void read_all(std::string const &text) {
    Reading r(text, false);
    while (r.next() != -1) continue;
}

std::string runs(std::string const &text) {
    cTypesBack const types;
    cat::ReadReport const report;
    read_all(text);
    return runs_of(report);
}

std::string const declared = "{T= attlist(x= attspec(type= int; flag= #IMPLIED)); ";

// Reads one value of a separate text, or what the test sets.
std::function<void()> reading;
bool read_other(cObj &, objref &) {
    reading();
    return true;
}
bool read_throwing(cObj &, objref &) { throw 5; }
using test::new_own;

class ErrorRuns : public QrvTest {
  protected:
    static void add_type(char const *name, cProcedure2 read) {
        typeref const type = make<cTypeObj>(name);
        cTypeInsert::insert(type, true);
        type->set_tmember("newobj", make<cExeMember>(new_own));
        type->set_tmember("read", make<cExeMember>(read));
    }

  private:
    cTypesBack types_;
};

TEST_F(ErrorRuns, continue_while_the_reader_is_not_synchronised) {
    EXPECT_EQ(runs("{a = 5 ms; b = 6; c = 7; }"), "-0000000");
    EXPECT_EQ(runs("{a; b = nosuch(1)}"), "-00000");
    EXPECT_EQ(runs("{a = ?;5 6; b = nosuch(1)}"), "-0000000") << "the ; is before a value";
    EXPECT_EQ(runs("{[] = 5; b = nosuch(1)}"), "-00-3");
    EXPECT_EQ(runs("{? a = nosuch(1)}"), "-00");
    EXPECT_EQ(runs("{a = nosuch(1) b = nosuch(2); c = nosuch(3)}"), "-000-4");
    EXPECT_EQ(runs("{a = 5 b = nosuch(1)}"), "-00");
}

TEST_F(ErrorRuns, end_at_an_entry_after_a_delimiter) {
    EXPECT_EQ(runs("{a = nosuch(1); b = nosuch(2), c = nosuch(3)}"), "-0-2-4");
    EXPECT_EQ(runs("{a = #none; b = nosuch(1)}"), "-0-2");
    EXPECT_EQ(runs("{a = #cRef; b = nosuch(1)}"), "-0-2") << "the skipped text ends with the ;";
    EXPECT_EQ(runs("{a = 99999999999; 'b' = 99999999999}"), "-0-2");
    EXPECT_EQ(runs("{a = 5 = ; b = nosuch(1)}"), "--1");
    EXPECT_EQ(runs("{?; a = nosuch(1)}"), "--1");
    EXPECT_EQ(runs("{a = 1;;; b = nosuch(1)}"), "--1") << "the same after superfluous delimiters";
}

TEST_F(ErrorRuns, end_at_an_entry_after_an_opening_bracket) {
    EXPECT_EQ(runs("{a = 5 b = [nosuch(1)]; c = nosuch(2)}"), "--111-5");
    EXPECT_EQ(runs("{a = 5 {b = nosuch(1)} }"), "--1");
    EXPECT_EQ(runs("{a = 5 b = {c = nosuch(1)}; }"), "--1");
    EXPECT_EQ(runs("{a = 5 b = <nosuch(1)>; }"), "--1");
    EXPECT_EQ(runs("{a = 5 b = map{c = nosuch(1)}; }"), "--1");
    EXPECT_EQ(runs(declared + "a = 5 b = T(x = nosuch(1)); c = nosuch(2)}"), "---2");
    EXPECT_EQ(runs("{a = 5 b = []; c = 1 2}"), "--11") << "an empty vector has no entry";
}

TEST_F(ErrorRuns, end_after_the_bracket_that_closes_where_they_began) {
    EXPECT_EQ(runs("{a = [1 2] b = nosuch(1)}"), "--1");
    EXPECT_EQ(runs("{a = {x = 1 2} b = nosuch(1)}"), "-00-3");
    EXPECT_EQ(runs("{a = <nosuch(1)> b = nosuch(1)}"), "-0-2");
    EXPECT_EQ(runs("{a = {x = {y = nosuch(1)}} b = nosuch(2)}"), "-0-2");
    EXPECT_EQ(runs(declared + "a = T(x = nosuch(1)) b = nosuch(2)}"), "--1");
    EXPECT_EQ(runs("{a = int(5 6) b = nosuch(1)}"), "-00") << "an int is not a container";
    EXPECT_EQ(runs("{a = nosuch(1) b = nosuch(1)}"), "-000")
        << "the text in these brackets is not read";
}

TEST_F(ErrorRuns, include_errors_at_that_bracket) {
    EXPECT_EQ(runs("[nosuch(1)]"), "-00");
    EXPECT_EQ(runs("[nosuch(1); ]"), "-00") << "no entry begins after the ;";
    EXPECT_EQ(runs("{a = [nosuch(1); > ; b = nosuch(2)}"), "-0000-5");
    EXPECT_EQ(runs("{a = [1; 2 > ; b = nosuch(1)}"), "--1");
    EXPECT_EQ(runs("{a = int(x); b = nosuch(1)}"), "-00-3");
    EXPECT_EQ(runs(declared + "a = T(x = 'text'); b = nosuch(1)}"), "-00-3");
    EXPECT_EQ(runs("{T = attlist(x= attspec(type= 5 ms; flag= #IMPLIED)); c = nosuch(2)}"),
              "-00000000-9");
}

TEST_F(ErrorRuns, continue_to_the_end_of_text_without_the_bracket) {
    EXPECT_EQ(runs("{a = [1; 2"), "-0");
    EXPECT_EQ(runs("{a = [{b = <1; {c = 2"), "-0000");
    EXPECT_EQ(runs("{a = [nosuch(1)"), "-0000");
    EXPECT_EQ(runs("{a = int(5"), "-0");
}

TEST_F(ErrorRuns, include_the_refusal_of_a_key_whose_value_had_errors) {
    EXPECT_EQ(runs("{c = [nosuch(1)] d = nosuch(2)}"), "-000-4")
        << "the refusal belongs to a run that has ended";
    EXPECT_EQ(runs("{c = [nosuch(1); 5]; d = nosuch(2)}"), "-0-2-4")
        << "the refusal belongs to the run of the last error";
    EXPECT_EQ(runs("[1; nosuch(1); 5 6; #none #none; nosuch(2)]"), "-0--333-77");
    EXPECT_EQ(runs("[[[nosuch(1)]]; [[nosuch(2)]]]"), "-000-4-666-1010")
        << "the errors about the outer container are another run";
    EXPECT_EQ(runs("{a = 1; b = #bad; c = #bad; }"), "--") << "there was no error before";
    EXPECT_EQ(runs("{a = [nosuch(1)] b = #bad; }"), "-000-")
        << "the earlier error belongs to another value";
}

TEST_F(ErrorRuns, in_lists_and_sets_end_at_the_next_item) {
    EXPECT_EQ(runs("[5 6; 7; 8 9]"), "--");
    EXPECT_EQ(runs("<5 6; 7; 8 9>"), "--");
    EXPECT_EQ(runs("[5 6 7 8; 9 ?]"), "-00-3");
    EXPECT_EQ(runs("[;;; 5 6; 7 8]"), "-0--");
}

TEST_F(ErrorRuns, errors_after_a_value_belong_to_the_run_of_its_entry) {
    EXPECT_EQ(runs("{int= attlist(); b= nosuch(1)}"), "--1");
    EXPECT_EQ(runs("{m = {v = 1}; m = {v = [1 2]}; b = nosuch(3) }"), "---2");
    EXPECT_EQ(runs("{m = {v = 1}; m = {v = nosuch(1)} m = nosuch(2)}"), "-0-2");
}

TEST_F(ErrorRuns, endless_merges_cause_one_run_for_each_entry) {
    std::string text = "{ m = { v = [1; 2] };\n";
    for (int i = 0; i < 20; ++i) text += "m = { v = #cRef(/m/v) };\n";
    std::string const found = runs(text + "}");
    EXPECT_EQ(found, std::string(found.size(), '-'));
    EXPECT_GT(found.size(), 1u);
}

TEST_F(ErrorRuns, do_not_extend_from_one_reading_to_the_next) {
    EXPECT_EQ(runs("{a = nosuch(1)} nosuch(2)"), "-0-");
    EXPECT_EQ(runs("5 ms 6 mm"), "---");
    cat::ReadReport const report;
    read_all("5 ms");
    read_all("5 ms");
    read_all("{a = 5 ms; }");
    EXPECT_EQ(runs_of(report), "---222");
}

TEST_F(ErrorRuns, each_entry_of_a_bare_list_has_separate_runs) {
    auto const bare = [](std::string const &text) {
        cat::ReadReport const report;
        std::istringstream is(text);
        objref value;
        cat::scan_container(is, value, true);
        return runs_of(report);
    };
    EXPECT_EQ(bare("a = 5 ms; b = 6; "), "-00000");
    EXPECT_EQ(bare("a = nosuch(1); b = nosuch(2); c = nosuch(3)"), "--1-3");
    EXPECT_EQ(bare("a = [1 2]; b = nosuch(2)"), "--1");
    messages(); // the summary messages
}

TEST_F(ErrorRuns, include_the_exception_that_ends_a_value) {
    add_type("Throws", read_throwing);
    EXPECT_EQ(runs("{a = Throws(1); b = [5 Throws(2)]; c = nosuch(1)}"), "-0-2222-7");
}

TEST_F(ErrorRuns, runs_in_text_that_is_read_inside_end_with_that_text) {
    add_type("Reads", read_other);
    reading = [] { read_all("[1; nosuch(1)]"); };
    EXPECT_EQ(runs("{a = Reads(x); b = nosuch(1)}"), "-00-3");
    EXPECT_EQ(runs("{a = 5 b = Reads(x) c = nosuch(1)}"), "--11-4") << "Reads has a bracket";
    reading = nullptr;
}

TEST_F(ErrorRuns, are_separate_for_each_report) {
    add_type("Reads", read_other);
    std::string inner;
    reading = [&inner] {
        cat::ReadReport const report;
        read_all("5 ms");
        inner += runs_of(report);
    };
    cat::ReadReport const report;
    read_all("{a = 5 b = Reads(x) c = nosuch(1)}");
    EXPECT_EQ(inner, "-");
    EXPECT_EQ(runs_of(report), "-00") << "the run continues after the other report has ended";
    reading = nullptr;
}

TEST_F(ErrorRuns, begin_with_the_first_error_within_the_limit) {
    cat::ReadReport report(2);
    read_all("{a = 5 ms; b = 6; }");
    EXPECT_EQ(runs_of(report), "-0");
    EXPECT_GT(report.dropped(), 0u);
    report.limit(4);
    read_all("{a = 5 ms; b = 6; }");
    EXPECT_EQ(runs_of(report), "-0-2");
    report.clear();
    read_all("{a = 5 ms; b = 6; }");
    EXPECT_EQ(runs_of(report), "-000");
}

// Drops the errors with the numbers in its member, and records the value of `follows`.
class cDropping : public cat::ReadWatch {
  public:
    bool error(cat::ReadError &error) override {
        seen += error.follows == cat::ReadError::none ? "-" : std::to_string(error.follows);
        if (number == clears) cat::ReadReport::current()->clear();
        return dropped.find(std::to_string(number++)) == std::string::npos;
    }
    std::string dropped, seen;
    int number = 0;
    int clears = -1;
};

TEST_F(ErrorRuns, begin_with_the_first_error_that_a_watch_keeps) {
    cDropping watch;
    watch.dropped = "0 2";
    cat::ReadReport report;
    report.watch(&watch);
    read_all("{a = nosuch(1); b = 5 ms; c = 6; }");
    EXPECT_EQ(watch.seen, "----1111") << "the watch has not kept the first error";
    EXPECT_EQ(runs_of(report), "--1111");
    report.watch(nullptr);
}

TEST_F(ErrorRuns, runs_begin_again_when_the_report_is_cleared) {
    cDropping watch;
    watch.clears = 2;
    cat::ReadReport report;
    report.watch(&watch);
    read_all("{a = 5 ms; b = 6; c = 7; }");
    EXPECT_EQ(watch.seen, "-0000000");
    EXPECT_EQ(runs_of(report), "-00000");
    report.watch(nullptr);
}

TEST_F(ErrorRuns, include_errors_raised_by_programs_but_not_added_ones) {
    add_type("Raises", read_other);
    cat::ReadReport report;
    reading = [&report] {
        eros().clear();
        eros().set(0x40000001, "of a program");
        raise_eros();
        report.add({});
        cat::ReadError error;
        error.follows = 7;
        report.keep(error);
        error.follows = 0;
        report.keep(error);
    };
    read_all("{a = 5 b = Raises(x) c = nosuch(1)}");
    EXPECT_EQ(runs_of(report), "-0--000");
    EXPECT_EQ(report.entries()[1].kind, cat::ErrorKind::other);
    reading = nullptr;
}

} // namespace
