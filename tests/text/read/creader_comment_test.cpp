// Comments: the value to which a comment belongs, and its stored text.

#include "tests/support/fixture.h"
#include "tests/text/read_support.h"

namespace {

class ReaderComment : public QrvTest {
  protected:
    ~ReaderComment() override { text_state().forget_comments(); }

    // Reads with comments; returns the comment of the value at a path, or "-".
    void read(std::string const &text) {
        reading_.emplace(text, false);
        reading_->scan.return_com(true);
        reading_->next();
        reading_->scan.note_object(nullptr);
        EXPECT_EQ(reading_->log, "");
    }
    std::string comment(char const *path) {
        objref const value = *path ? reading_->at(path) : reading_->value;
        std::string text = "-";
        if (!value->get_comment(text)) text = "-";
        return text;
    }
    std::optional<reader_test::Reading> reading_;
};

TEST_F(ReaderComment, belongs_to_the_value_before_it) {
    read("{ a = 1; // one\n b = 2 /* two */; c = 3 }");
    EXPECT_EQ(comment("a"), " // one");
    EXPECT_EQ(comment("b"), " /* two */");
    EXPECT_EQ(comment("c"), "-");
}

TEST_F(ReaderComment, a_comment_after_an_opening_bracket_belongs_to_the_container) {
    read("{ // map\n v = [ // vector\n 1 ]; }");
    EXPECT_EQ(comment(""), " // map");
    EXPECT_EQ(comment("v"), " // vector");
}

TEST_F(ReaderComment, a_comment_after_a_closing_bracket_belongs_only_to_a_one_line_container) {
    read("{ a = {x=1}; // a\n b = {x=1\n}; // b\n c = 3 }");
    EXPECT_EQ(comment("a"), " // a");
    EXPECT_EQ(comment("b"), "-");
}

TEST_F(ReaderComment, a_comment_before_the_first_value_is_dropped) {
    read("// head\n/* more */ { a = 1 }");
    EXPECT_EQ(comment(""), "-");
    EXPECT_EQ(comment("a"), "-");
}

TEST_F(ReaderComment, never_belongs_to_a_key) {
    read("{ a /* key */ = 1; }");
    EXPECT_EQ(comment("a"), "-");
}

TEST_F(ReaderComment, the_first_of_two_is_stored) {
    read("{ a = 1; // one\n a = 2; // two\n b = #cRef(/a) // three\n }");
    EXPECT_EQ(comment("a"), " // one");
}

TEST_F(ReaderComment, never_belongs_to_a_constant) {
    read("{ a = #true; // one\n b = #cRef(/a); // two\n c = #REQUIRED // three\n }");
    EXPECT_EQ(comment("a"), "-");
    EXPECT_EQ(comment("c"), "-");
}

TEST_F(ReaderComment, a_line_comment_before_another_keeps_its_line_end) {
    read("{ a = 1 // one\n ; /* two */ b = 2 }");
    EXPECT_EQ(comment("a"), " // one\n /* two */");
    read("{ a = 1 // one\n // two\n ; b = 2 }");
    EXPECT_EQ(comment("a"), " // one\n // two");
    read("{ a = 1 /* one */ ; /* two */ b = 2 }");
    EXPECT_EQ(comment("a"), " /* one */ /* two */");
}

TEST_F(ReaderComment, carriage_returns_are_removed_and_never_close_a_comment_early) {
    read("{ a = 1; // one\r\n b = 2; /* x\r\ny *\r/ *\r\r/ z */ c = 3 }");
    EXPECT_EQ(comment("a"), " // one");
    EXPECT_EQ(comment("b"), " /* x\ny * / * / z */");
}

TEST_F(ReaderComment, is_not_stored_without_return_com) {
    reader_test::Reading r("{ a = 1; // one\n }");
    std::string text;
    EXPECT_FALSE(r.at("a")->get_comment(text));
    EXPECT_EQ(cAttrScan::com_collected(), "");
}

TEST_F(ReaderComment, a_comment_of_one_text_is_never_stored_in_another) {
    {
        reader_test::Reading first("{ a = 1; b = 2 } // tail", false);
        first.scan.return_com(true);
        first.next();
        objref const kept = first.at("b");
        EXPECT_EQ(text_state().last_noted(), first.value);
    }
    read("// head of the second\n{ c = 3 }");
    EXPECT_EQ(comment("c"), "-");
    reading_.reset();
    text_state().last_noted() = cat::of(1);
    text_state().com_collected() = "// left";
    reader_test::Reading third("5");
    EXPECT_EQ(cAttrScan::com_collected(), "");
    EXPECT_EQ(text_state().last_noted(), nullptr);
}

TEST_F(ReaderComment, is_written_unchanged) {
    for (std::string const text :
         {"{ // head\n  a= 1; // one\n  b= {x= 1; }; /* b */\n  c= [ // c\n      1, // first\n"
          "  ]; \n}"}) {
        read(text);
        EXPECT_EQ(reading_->text(), text);
    }
}

} // namespace
