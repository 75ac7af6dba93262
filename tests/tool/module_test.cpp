// `--module`: the named code is loaded before anything is read, and no other code is.

#include "tests/tool/tool_run.h"

using tool_test::cRun;
using tool_test::cStart;
using tool_test::usage_error;

namespace {

class ToolModule : public tool_test::Tool {
  protected:
    ToolModule() {
        copy("leaves_a_file", "evil");
        copy("type_factory", "types");
        copy("throws", "throws");
        write("f", "{a= 1; }\n");
    }
    void copy(std::string const &module, std::string const &name) const {
        std::filesystem::copy_file(test::binary_file("tests/modules_to_load/" + module + ".so"),
                                   path(name + ".so"));
    }
    bool was_loaded() const { return std::filesystem::remove(path("loaded")); }
};

cRun const one{0, "1\n", ""};

TEST_F(ToolModule, is_loaded_if_requested_before_or_after_the_command) {
    EXPECT_EQ(run({"get", "f", "a"}), one);
    EXPECT_FALSE(was_loaded());
    EXPECT_EQ(run({"--module", "./evil", "get", "f", "a"}), one);
    EXPECT_TRUE(was_loaded());
    EXPECT_EQ(run({"get", "f", "a", "--module", "./evil"}), one);
    EXPECT_TRUE(was_loaded());
    EXPECT_EQ(run({"get", "--module=./evil", "f", "a"}), one);
    EXPECT_TRUE(was_loaded());
}

TEST_F(ToolModule, accepts_one_name_each_time) {
    EXPECT_EQ(run({"get", "--module", "./types", "--module", "./evil", "f", "a"}), one);
    EXPECT_TRUE(was_loaded());
    EXPECT_EQ(run({"--module", "./types", "get", "--module", "./evil", "f", "a"}), one);
    EXPECT_TRUE(was_loaded());
}

TEST_F(ToolModule, commands_that_read_and_commands_that_change_accept_it) {
    for (std::vector<std::string> command :
         std::vector<std::vector<std::string>>{{"fmt", "f"},
                                               {"check", "f"},
                                               {"tokens", "f"},
                                               {"get", "f", "a"},
                                               {"set", "f", "a= 2"},
                                               {"merge", "f", "f"}}) {
        command.insert(command.end(), {"--module", "./evil"});
        EXPECT_EQ(run(command).status, 0) << command.front();
        EXPECT_TRUE(was_loaded()) << command.front();
    }
}

TEST_F(ToolModule, adds_types) {
    EXPECT_EQ(run_on("{s= attspec(type= Temperature)}", {"check"}).status, 1);
    EXPECT_EQ(run_on("{s= attspec(type= Temperature)}", {"--module", "./types", "fmt"}),
              (cRun{0, "{s= attspec(type=Temperature; flag=#REQUIRED;); }\n", ""}));
}

TEST_F(ToolModule, a_module_that_cannot_be_loaded_ends_the_command) {
    EXPECT_EQ(run({"get", "f", "a", "--module", "./none"}),
              (cRun{2, "",
                    "qrv: error: cannot load the module './none'\n"
                    "qrv: note: ./none.so: cannot open shared object file: No such file or "
                    "directory\n"
                    "qrv: note: ./none: cannot open shared object file: No such file or directory\n"
                    "qrv: note: ././none.so: cannot open shared object file: No such file or "
                    "directory\n"
                    "qrv: note: ././none: cannot open shared object file: No such file or "
                    "directory\n"
                    "qrv: note: modules/./none.so: cannot open shared object file: No such file or "
                    "directory\n"
                    "qrv: note: modules/./none: cannot open shared object file: No such file or "
                    "directory\n"}));
    EXPECT_EQ(run({"get", "f", "a", "--module", ""}),
              (cRun{2, "",
                    "qrv: error: cannot load the module ''\n"
                    "qrv: note: The name of a module is empty\n"}));
    EXPECT_EQ(run({"get", "f", "a", "--module", "./throws"}),
              (cRun{2, "",
                    "qrv: error: cannot load the module './throws'\n"
                    "qrv: note: set-up of throws\n"}));
    EXPECT_EQ(run({"--module", "./none", "--module", "./evil", "get", "f", "a"}).status, 2);
    EXPECT_FALSE(was_loaded());
}

TEST_F(ToolModule, an_error_of_the_library_in_a_module_is_reported_with_its_text) {
    copy("throws_error", "throws_error");
    EXPECT_EQ(run({"get", "f", "a", "--module", "./throws_error"}),
              (cRun{2, "",
                    "qrv: error: cannot load the module './throws_error'\n"
                    "qrv: note: set-up of throws_error\n"}));
}

TEST_F(ToolModule, an_exception_of_a_module_while_a_file_is_read_is_reported) {
    copy("throws_later", "throws_later");
    EXPECT_EQ(run({"get", "f", "a", "--module", "./throws_later"}), one);
    EXPECT_EQ(run({"get", "f", "a/b", "--module", "./throws_later"}),
              (cRun{2, "", "f: error: the work failed: thrown at an error\n"}));
}

// --- where a module is searched ---

class ToolModuleSearch : public ToolModule {
  protected:
    ToolModuleSearch() {
        std::filesystem::create_directories(path("bin/modules"));
        std::filesystem::copy_file(test::binary_file("bin/qrv"), path("bin/qrv"));
    }
    // Runs a copy of the tool that has its own folder "modules".
    cRun run_copy(std::vector<std::string> arguments) const {
        cStart start;
        start.program = path("bin/qrv");
        start.prepare = [] { ::setenv("LD_LIBRARY_PATH", test::binary_file("lib").c_str(), 1); };
        return run(std::move(arguments), start);
    }
    void copy_beside(std::string const &module, std::string const &name) const {
        copy(module, "bin/modules/" + name);
    }
};

TEST_F(ToolModuleSearch, prefers_the_folder_beside_the_program) {
    EXPECT_EQ(run_copy({"--module", "evil", "get", "f", "a"}), one);
    EXPECT_TRUE(was_loaded());
    copy_beside("type_factory", "evil");
    EXPECT_EQ(run_copy({"--module", "evil", "get", "f", "a"}), one);
    EXPECT_FALSE(was_loaded());
    EXPECT_NE(run_copy({"--module", "evil", "types"}).out.find("module evil"), std::string::npos);
}

TEST_F(ToolModuleSearch, continues_where_the_library_searches) {
    std::filesystem::create_directory(path("modules"));
    std::filesystem::rename(path("evil.so"), path("modules/evil.so"));
    EXPECT_EQ(run({"--module", "evil", "get", "f", "a"}), one);
    EXPECT_TRUE(was_loaded());
    EXPECT_EQ(run({"--module", "none", "--module", "evil", "get", "f", "a"}).status, 2);
    EXPECT_FALSE(was_loaded());
}

TEST_F(ToolModuleSearch, loads_a_name_once) {
    copy_beside("leaves_a_file", "evil");
    EXPECT_EQ(run_copy({"--module", "evil", "--module", "evil", "get", "f", "a"}), one);
    EXPECT_TRUE(was_loaded());
}

TEST_F(ToolModuleSearch, treats_a_name_with_a_slash_as_a_path) {
    copy_beside("type_factory", "evil");
    EXPECT_EQ(run_copy({"--module", "./evil", "get", "f", "a"}), one);
    EXPECT_TRUE(was_loaded());
}

TEST_F(ToolModuleSearch, stops_at_a_broken_file_beside_the_program) {
    copy_beside("throws", "evil");
    cRun const failed = run_copy({"--module", "evil", "get", "f", "a"});
    EXPECT_EQ(failed, (cRun{2, "",
                            "qrv: error: cannot load the module 'evil'\n"
                            "qrv: note: set-up of throws\n"}));
    std::filesystem::remove(path("bin/modules/evil.so"));
    write("bin/modules/evil.so", "no module");
    EXPECT_EQ(run_copy({"--module", "evil", "get", "f", "a"}).status, 2);
    EXPECT_FALSE(was_loaded());
}

TEST_F(ToolModuleSearch, a_failed_search_lists_all_paths) {
    std::string const reported = run_copy({"--module", "nowhere", "get", "f", "a"}).err;
    for (std::string const place : {"/bin/modules/nowhere.so: ", "note: nowhere.so: ",
                                    "note: ./nowhere.so: ", "note: modules/nowhere.so: "})
        EXPECT_NE(reported.find(place), std::string::npos) << place << "\n" << reported;
}

TEST_F(ToolModule, a_module_whose_name_ends_in_a_slash_is_refused) {
    for (std::string const name : {"/", "./", "modules/"})
        EXPECT_EQ(run({"get", "f", "a", "--module", name}),
                  (cRun{2, "",
                        "qrv: error: cannot load the module '" + name +
                            "'\nqrv: note: give the name of a file, not of a folder\n"}));
}

TEST_F(ToolModule, requires_a_name) {
    EXPECT_EQ(run({"get", "f", "a", "--module"}), usage_error("get", "--module needs a value"));
}

// No file loads a module, for any names in it and any modules loaded before.
TEST_F(ToolModule, no_file_loads_one) {
    for (std::string const name : {"x:./evil", "./evil", "evil", "evil:./evil", "x:./evil.so"}) {
        std::vector<std::string> files;
        for (std::string const &text : std::vector<std::string>{
                 "{R= attlist(k= attspec(type= \"" + name + "\"; default= 1)); r= R(k= 1)}",
                 "{v= \"" + name + "\"(1)}", "{v= " + name + "(1)}",
                 "{\"" + name + "\"= attlist(k= attspec(type= int)); v= [\"" + name + "\"(k= 1)]}",
                 "{C= choice({\"" + name + "\"= 1}); c= C(\"" + name + "\")}",
                 "{\"" + name + "\"= choice({a= 1}); v= #cRef(\"" + name + "\")}",
                 "{s= attspec(type= \"" + name + "\")}"}) { // the last one is always refused
            files.push_back("f" + std::to_string(files.size()));
            write(files.back(), text);
        }
        for (std::string const command : {"fmt", "check"})
            for (bool const beside_another : {false, true}) {
                std::vector<std::string> arguments{command};
                if (beside_another) arguments.insert(arguments.end(), {"--module", "./types"});
                arguments.insert(arguments.end(), files.begin(), files.end());
                cRun const done = run(arguments);
                EXPECT_LE(done.status, 2) << name;
                EXPECT_NE(done.err.find(files.back() + ":"), std::string::npos)
                    << "not all files were read: " << done.err;
                EXPECT_FALSE(was_loaded()) << command << ": " << name;
            }
    }
}

TEST_F(ToolModule, no_statement_and_no_path_loads_one) {
    write("s", "{s= attspec(type= int); R= attlist(k= attspec(type= int)); C= choice({a= 1}); }\n");
    for (std::string const name : {"x:./evil", "./evil", "evil"}) {
        for (std::string const &statement : std::vector<std::string>{
                 "s/type= \"" + name + "\"", "s= attspec(type= \"" + name + "\")",
                 "R/k/type &= \"" + name + "\"", "R/new= attspec(type= \"" + name + "\")",
                 "C/new= \"" + name + "\"", "v= \"" + name + "\"(1)"})
            for (std::vector<std::string> command : std::vector<std::vector<std::string>>{
                     {"set", "s", statement}, {"set", "--module", "./types", "s", statement}}) {
                run(command);
                EXPECT_FALSE(was_loaded()) << statement;
            }
        run({"get", "s", "\"" + name + "\"/s"});
        write("m", "{s= attspec(type= \"" + name + "\")}");
        run({"merge", "s", "m"});
        EXPECT_FALSE(was_loaded()) << name;
    }
}

} // namespace
