// How modules are loaded implicitly, by references of the form key:module and by type names, and
// what prevents it: the filter, and reading text.

#include "qrv/containers/cmapobj.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cmodifier.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/file/cfile.h"
#include "qrv/text/read/cattrscan.h"
#include "tests/modules/loading.h"

#include <sstream>

namespace {

class ModuleReference : public Loading {
  protected:
    // The names that were passed to the filter, and the result that it returns.
    static inline std::string asked;
    static inline bool answer;

    static void filter(bool what) {
        asked.clear();
        answer = what;
        qrv_set_module_filter([](std::string const &name) {
            asked += name + "; ";
            return answer;
        });
    }

    static void unload(char const *name) {
        auto *const entry = cRepoImpl::find(modules(), name);
        EXPECT_TRUE(cModule::unload(static_cast<cModule *>(cRepoImpl::ptr(entry)))) << name;
    }
    // Unloads a module loaded any number of times, which is at most ten here.
    static void unload_all(char const *name) {
        auto *const module =
            static_cast<cModule *>(cRepoImpl::ptr(cRepoImpl::find(modules(), name)));
        bool gone = false;
        for (int i = 0; i < 10 && !gone; ++i) gone = cModule::unload(module);
        EXPECT_TRUE(gone) << name;
    }
};
class ModuleReferenceEdge : public ModuleReference {};

TEST_F(ModuleReferenceEdge, find_loads_the_module_after_the_colon_for_a_missing_key) {
    put("plain");
    cRepositoryEntry *const entry = cRepoImpl::find(things(), "plain thing:plain");
    ASSERT_NE(entry, nullptr) << cModule::last_error();
    EXPECT_EQ(cRepoImpl::name(entry), "plain thing");
    EXPECT_EQ(cRepoImpl::module(entry)->name(), "plain");
    EXPECT_EQ(cRepoImpl::find(things(), "plain thing:nowhere"),
              entry); // the key exists, so nothing is loaded
    EXPECT_EQ(cModule::last_error(), "");
    unload("plain");
}

TEST_F(ModuleReferenceEdge, find_loads_nothing_for_a_plain_name_but_findorload_does) {
    put("bare", "bare thing.so"); // the module with the name of the thing
    EXPECT_EQ(cRepoImpl::find(things(), "bare thing"), nullptr);
    EXPECT_FALSE(is_mapped("./bare thing.so"));
    cRepositoryEntry *const entry = cRepoImpl::findorload(things(), "bare thing", "");
    ASSERT_NE(entry, nullptr) << cModule::last_error();
    EXPECT_EQ(cRepoImpl::module(entry)->name(), "bare thing");
    unload("bare thing");
}

TEST_F(ModuleReferenceEdge, findorload_truncates_a_key_of_300_characters_to_255) {
    std::string const key(300, 'k');
    EnteredThing const cut(key.substr(0, 255));
    cRepositoryEntry *const entry = cRepoImpl::findorload(things(), key, "");
    EXPECT_EQ(entry, cRepoImpl::find(things(), key.substr(0, 255)));
    EXPECT_NE(entry, nullptr);
    EXPECT_EQ(cRepoImpl::find(things(), key), nullptr);
    EXPECT_EQ(cRepoImpl::findorload(things(), key + ":x", ""), entry);
    EXPECT_EQ(cRepoImpl::findorload(things(), key.substr(0, 255), ""), entry);
    EXPECT_EQ(cRepoImpl::findorload(things(), key.substr(0, 254), ""), nullptr);
    EnteredThing const whole(key); // findorload does not find it
    EXPECT_EQ(cRepoImpl::findorload(things(), key, ""), entry);
    EXPECT_NE(cRepoImpl::find(things(), key), entry);
}

TEST_F(ModuleReferenceEdge, an_entry_created_outside_any_load_belongs_to_the_main_module) {
    EnteredThing const here("here");
    EXPECT_EQ(module_of("here"), &cGetMainModule());
    EXPECT_EQ(cRepoImpl::module(nullptr), &cGetMainModule());
    EXPECT_EQ(cRepoImpl::module(cRepoImpl::end(things())), &cGetMainModule());
}

TEST_F(ModuleReference, findorload_tries_its_modules_in_order) {
    auto const order = [](char const *name, char const *module) {
        filter(false);
        EXPECT_EQ(cRepoImpl::findorload(things(), name, module), nullptr);
        return asked;
    };
    EXPECT_EQ(order("key", ""), "key; ");
    EXPECT_EQ(order("key", "module"), "module; key; ");
    EXPECT_EQ(order("key:behind", "module"), "module; behind; key; ");
    EXPECT_EQ(order("key:behind", ""), "behind; key; ");
    EXPECT_EQ(order("key:", "module"), "module; key; ");
    EXPECT_EQ(order("key:a:b", ""), "a:b; key; ");
    EXPECT_EQ(order(":behind", "module"), "module; behind; ");
    EXPECT_EQ(order(":", ""), "");
    EXPECT_EQ(order("", "module"), "");
    EXPECT_EQ(cRepoImpl::findorload(nullptr, "key", "module"), nullptr);
    EXPECT_EQ(asked, "");
}

TEST_F(ModuleReference, findorload_continues_if_a_module_does_not_have_the_key) {
    put("plain");
    put("releases");
    put("bare", "bare thing.so");
    cRepositoryEntry *const entry = cRepoImpl::findorload(things(), "bare thing:releases", "plain");
    ASSERT_NE(entry, nullptr) << cModule::last_error();
    EXPECT_EQ(names(things()), "plain thing;stays;bare thing;");
    for (char const *name : {"plain", "releases", "bare thing"}) unload(name);
}

TEST_F(ModuleReference, findorload_stops_when_the_key_is_found) {
    put("plain");
    EnteredThing const here("here");
    filter(true);
    EXPECT_EQ(cRepoImpl::findorload(things(), "here:nowhere", "plain"), thing("here"));
    EXPECT_EQ(asked, "");
    EXPECT_NE(cRepoImpl::findorload(things(), "plain thing:nowhere", "plain"), nullptr);
    EXPECT_EQ(asked, "plain; ");
    unload("plain");
}

TEST_F(ModuleReference, find_counts_a_loaded_module_that_lacks_the_key) {
    put("plain");
    cModule *const module = cModule::load("plain");
    EXPECT_EQ(cRepoImpl::find(things(), "other:plain"), nullptr);
    EXPECT_FALSE(module->unload());
    EXPECT_TRUE(module->unload());
    EXPECT_EQ(cRepoImpl::find(things(), "other:"), nullptr);
    EXPECT_EQ(cRepoImpl::find(nullptr, "plain thing:plain"), nullptr);
    EXPECT_FALSE(is_mapped("./plain.so"));
}

TEST_F(ModuleReference, find_type_loads_the_module_that_has_the_factory) {
    put("evil");
    EXPECT_EQ(&cat::find_type("evil:evil"), &cat::type_nil()); // this module creates nothing
    EXPECT_EQ(events(), "evil is there; evil is asked; ");
    EXPECT_EQ(&cat::find_type("evil"), &cat::type_nil());
    EXPECT_EQ(events(), "evil is asked; ");
    unload("evil");
}

// --- the filter ---

TEST_F(ModuleReference, a_refused_name_counts_as_not_found) {
    put("plain");
    filter(false);
    EXPECT_EQ(cModule::load("./plain"), nullptr);
    EXPECT_EQ(cModule::last_error(), "Module './plain' is refused by the program");
    EXPECT_EQ(cRepoImpl::find(things(), "plain thing:plain.so"), nullptr);
    EXPECT_EQ(asked, "./plain; plain.so; ");
    EXPECT_FALSE(is_mapped("./plain.so"));
}

TEST_F(ModuleReference, the_filter_is_also_called_for_known_modules) {
    put("plain");
    cModule *const module = cModule::load("plain");
    filter(false);
    EXPECT_EQ(cModule::load("plain"), nullptr);
    EXPECT_EQ(cModule::load("quorvanta"), nullptr);
    answer = true;
    EXPECT_EQ(cModule::load("quorvanta"), &cGetMainModule());
    EXPECT_TRUE(module->unload()); // the refused load was not counted
}

TEST_F(ModuleReference, an_exception_of_the_filter_propagates) {
    put("plain");
    qrv_set_module_filter([](std::string const &name) -> bool { throw name; });
    EXPECT_THROW(cModule::load("plain"), std::string);
    qrv_set_module_filter(nullptr);
    cModule *const module = cModule::load("plain");
    ASSERT_NE(module, nullptr);
    EXPECT_TRUE(module->unload());
}

TEST_F(ModuleReference, the_filter_is_also_called_for_loads_during_setup) {
    put("nested");
    put("plain");
    qrv_set_module_filter([](std::string const &name) { return name == "nested"; });
    cModule *const module = cModule::load("nested");
    ASSERT_NE(module, nullptr) << cModule::last_error();
    EXPECT_EQ(events(), "Module 'plain' is refused by the program; ");
    EXPECT_TRUE(module->unload());
}

// --- while text is being read ---

// Reads a value from text and drops it.
void read(std::string const &text) {
    cErrorLog const errors;
    std::istringstream is(text);
    is.imbue(std::locale::classic());
    cAttrScan scan(is, false);
    objref value;
    scan.scan_obj(value, nullptr);
}

// Every way to name a module, for use by code that runs while text is read.
std::string seek_everywhere() {
    std::string result;
    auto const add = [&result](bool found) { result += found ? '1' : '0'; };
    add(cModule::load("evil"));
    add(cModule::load((std::filesystem::current_path() / "evil").string()));
    add(cRepoImpl::find(things(), "no thing:evil") || !cModule::last_error().empty());
    add(cRepoImpl::findorload(things(), "evil", "evil"));
    add(&cat::find_type("evil") != &cat::type_nil());
    add(&cat::find_type("evil:./evil") != &cat::type_nil());
    return result;
}

// A type whose `read` tries every way, as a program's type that follows the text could do.
cTypeObj *seeker = nullptr;

class cSeeker : public cObj {
  public:
    cSeeker() : cObj(seeker) {}
};

objref new_seeker(objref) { return make<cSeeker>(); }

std::string sought;
bool read_seeker(cObj &, objref &) {
    sought = cat::is_reading() ? seek_everywhere() : "not reading";
    return true;
}

class Reading : public ModuleReference {
  protected:
    Reading() {
        sought.clear();
        seeker = new cTypeObj("Seeker");
        cTypeInsert::insert(typeref::adopt(seeker), false);
        seeker->set_tmember("newobj", make<cExeMember>(new_seeker));
        seeker->set_tmember("read", make<cExeMember>(read_seeker));
        put("evil");
        put("evil", "x:/path/evil.so");
    }
    ~Reading() override { cat::type_hash_ptr()->delitem("Seeker"); }
};

TEST_F(Reading, types_named_in_text_are_not_loaded) {
    for (char const *text :
         {"evil(1)", "{ a= evil(1); b= evil{}; c= evil<1>; d= evil[2]; }", "x:/path/evil(1)",
          "{ a= x:/path/evil(1); }", "{ a= evil:evil(1); }", "{ a= \"evil:evil\"(1); }",
          "attspec( type= evil; )", "attspec( type= \"x:/path/evil\"; )",
          "{ P= attlist( a= attspec( type= evil; ); ); a= P( a= 1; ); }", "{ evil(1)= 2; }",
          "#cRef(evil:evil)", "{ a= #evil:evil; }", "choice( evil; )"}) {
        read(text);
        EXPECT_EQ(events(), "") << text;
        EXPECT_FALSE(is_mapped("./evil.so")) << text;
        EXPECT_FALSE(is_mapped("x:/path/evil.so")) << text;
    }
    cat::type_hash_ptr()->delitem("P"); // a type that one of the files declares
    messages();
}

TEST_F(Reading, files_and_paths_load_no_modules) {
    cErrorLog const errors;
    for (char const *text : {"{ a= evil(1); set_entrytype= \"evil:evil\"; }",
                             "{ entrytype= \"x:/path/evil\"; x:/path/evil= 1; }"}) {
        std::ofstream("file.attr") << text;
        objref value;
        file2obj("file.attr", value);
        objref const map = make<cMapObj>();
        file2map("file.attr", static_cast<cMapObj &>(*map));
        for (char const *path : {"evil:evil", "evil(1)", "x:/path/evil"})
            EXPECT_FALSE(cObj::is_good(map->getattrp(path))) << path;
    }
    EXPECT_EQ(events(), "");
    EXPECT_FALSE(is_mapped("./evil.so"));
    messages();
}

TEST_F(Reading, nothing_is_loaded_while_text_is_read) {
    read("{ a= Seeker(1); }");
    EXPECT_EQ(sought, "001000"); // the third is true: the reason of the failure is reported
    EXPECT_EQ(cModule::last_error(), "Module './evil' is not loaded while text is being read");
    EXPECT_EQ(events(), "");
    EXPECT_FALSE(is_mapped("./evil.so"));
}

TEST_F(Reading, a_loaded_module_is_not_counted_while_text_is_read) {
    cModule *const module = cModule::load("evil");
    ASSERT_NE(module, nullptr) << cModule::last_error();
    read("Seeker(1)");
    EXPECT_EQ(sought, "001000");
    EXPECT_EQ(events(), "evil is there; evil is asked; evil is asked; ");
    EXPECT_TRUE(module->unload());
}

TEST_F(Reading, a_program_may_load_modules_between_two_reads) {
    read("Seeker(1)");
    cModule *const module = cModule::load("evil");
    ASSERT_NE(module, nullptr) << cModule::last_error();
    EXPECT_EQ(events(), "evil is there; ");
    EXPECT_TRUE(module->unload());
    EXPECT_EQ(seek_everywhere(), "110000");
    unload_all("evil");
    EXPECT_FALSE(is_mapped("./evil.so"));
    events();
}

TEST_F(Reading, a_programs_filter_may_allow_loading_while_text_is_read) {
    filter(true);
    read("{ a= Seeker(1); }");
    EXPECT_EQ(sought, "110000");
    EXPECT_NE(events().find("evil is there; "), std::string::npos);
    filter(false);
    unload_all("evil");
    EXPECT_EQ(seek_everywhere(), "001000"); // and the filter forbids loading to a program
    EXPECT_EQ(events(), "");
    EXPECT_FALSE(is_mapped("./evil.so"));
}

} // namespace
