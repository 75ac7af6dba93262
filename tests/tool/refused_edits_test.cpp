// Edits that the existing text cannot represent: their messages, and when --reformat helps.

#include "tests/tool/tool_run.h"

using tool_test::cRun;

namespace {

std::string const declared = "{\n"
                             "  before = {};\n"
                             "  Mode = choice({off = 0; eco = 1}); // how it runs\n"
                             "  m = Mode(eco);\n"
                             "  P = attlist(mode = attspec(type = Mode; default = Mode(off)));\n"
                             "  after = {};\n"
                             "}\n";

class RefusedEdits : public tool_test::Tool {
  protected:
    // The command is refused, with --reformat by the same message, and the file is unchanged.
    std::string refused(std::string const &text, std::vector<std::string> arguments) const {
        write("f", text);
        arguments.insert(arguments.begin() + 1, "f");
        arguments.push_back("-i");
        cRun const run = this->run(arguments);
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.out, "");
        arguments.push_back("--reformat");
        EXPECT_EQ(this->run(arguments), run);
        EXPECT_EQ(read("f"), text);
        return run.err;
    }
    std::string out(std::string const &text, std::vector<std::string> arguments) const {
        write("f", text);
        arguments.insert(arguments.begin() + 1, "f");
        cRun const run = this->run(arguments);
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.err, "");
        return run.out;
    }
};

constexpr char const *first = "f: note: a type must be declared before its first use\n";

TEST_F(RefusedEdits, a_value_before_the_declaration_of_its_type_is_refused) {
    EXPECT_EQ(refused(declared, {"ins", "Mode", "before", "x", "Mode(eco)"}),
              std::string("f: error: /x needs the type 'Mode', which would be declared only after "
                          "it, at /Mode\n") +
                  first);
    EXPECT_EQ(refused(declared, {"mv", "m", "before/m"}),
              std::string("f: error: /before/m needs the type 'Mode', which would be declared only "
                          "after it, at /Mode\n") +
                  first);
    EXPECT_EQ(refused(declared, {"set", "before/l = [1, Mode(off)]"}),
              std::string("f: error: /before/l/1 needs the type 'Mode', which would be declared "
                          "only after it, at /Mode\n") +
                  first);
}

TEST_F(RefusedEdits, a_declaration_after_a_use_of_its_type_is_refused) {
    EXPECT_EQ(refused(declared, {"mv", "Mode", "after/Mode"}),
              std::string("f: error: /m needs the type 'Mode', which would be declared only after "
                          "it, at /after/Mode\n") +
                  first);
    EXPECT_EQ(refused(declared, {"mv", "P", "before/P"}),
              std::string("f: error: /before/P needs the type 'Mode', which would be declared only "
                          "after it, at /Mode\n") +
                  first);
}

TEST_F(RefusedEdits, replacing_a_declaration_in_use_is_refused) {
    EXPECT_EQ(refused(declared, {"set", "Mode &= 5"}),
              "f: error: /m needs the type 'Mode', which would not be declared any more\n"
              "f: note: delete or change the values of a type before its declaration\n");
}

TEST_F(RefusedEdits, a_declaration_may_move_into_a_map_before_its_uses) {
    EXPECT_EQ(out(declared, {"mv", "Mode", "before/Mode"}),
              "{\n"
              "  before = {\n"
              "    Mode = choice({off = 0; eco = 1}); // how it runs\n"
              "  };\n"
              "  m = Mode(eco);\n"
              "  P = attlist(mode = attspec(type = Mode; default = Mode(off)));\n"
              "  after = {};\n"
              "}\n");
}

// --- repeated keys ---

TEST_F(RefusedEdits, an_entry_is_added_to_the_list_that_replaced_another_one) {
    EXPECT_EQ(out("{ b=[1]; b=[2,3]; }\n", {"ins", "b/0", "after", "7"}), "{ b=[2,7,3]; }\n");
    EXPECT_EQ(out("{\n"
                  "  b = [1]; // old\n"
                  "  c = 0;\n"
                  "  c = 5; // not touched\n"
                  "  b = []; // new\n"
                  "}\n",
                  {"set", "b << {q=1}"}),
              "{\n"
              "  b = [{q = 1}]; // old // new\n"
              "  c = 0;\n"
              "  c = 5; // not touched\n"
              "}\n");
}

} // namespace
