// What brings modules in from elsewhere: references of the form key:module, types by name; and what
// keeps them out: the filter, and text that is being read.

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
    // Which names the filter was asked about, and what it answers.
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
    // However often it was loaded, which is at most ten times here.
    static void unload_all(char const *name) {
        auto *const module =
            static_cast<cModule *>(cRepoImpl::ptr(cRepoImpl::find(modules(), name)));
        bool gone = false;
        for (int i = 0; i < 10 && !gone; ++i) gone = cModule::unload(module);
        EXPECT_TRUE(gone) << name;
    }
};
class ModuleReferenceEdge : public ModuleReference {};

TEST_F(ModuleReferenceEdge, find_loads_the_module_behind_the_colon_for_a_missing_key) {
    put("plain");
    cRepositoryEntry *const entry = cRepoImpl::find(things(), "plain thing:plain");
    ASSERT_NE(entry, nullptr) << cModule::last_error();
    EXPECT_EQ(cRepoImpl::name(entry), "plain thing");
    EXPECT_EQ(cRepoImpl::module(entry)->name(), "plain");
    EXPECT_EQ(cRepoImpl::find(things(), "plain thing:nowhere"), entry); // there: nothing is loaded
    EXPECT_EQ(cModule::last_error(), "");
    unload("plain");
}

TEST_F(ModuleReferenceEdge, find_loads_nothing_for_a_plain_name_but_findorload_does) {
    put("bare", "bare thing.so"); // the module of the thing's name
    EXPECT_EQ(cRepoImpl::find(things(), "bare thing"), nullptr);
    EXPECT_FALSE(is_mapped("./bare thing.so"));
    cRepositoryEntry *const entry = cRepoImpl::findorload(things(), "bare thing", "");
    ASSERT_NE(entry, nullptr) << cModule::last_error();
    EXPECT_EQ(cRepoImpl::module(entry)->name(), "bare thing");
    unload("bare thing");
}

TEST_F(ModuleReferenceEdge, findorload_cuts_a_key_of_300_characters_to_255) {
    std::string const key(300, 'k');
    EnteredThing const cut(key.substr(0, 255));
    cRepositoryEntry *const entry = cRepoImpl::findorload(things(), key, "");
    EXPECT_EQ(entry, cRepoImpl::find(things(), key.substr(0, 255)));
    EXPECT_NE(entry, nullptr);
    EXPECT_EQ(cRepoImpl::find(things(), key), nullptr);
    EXPECT_EQ(cRepoImpl::findorload(things(), key + ":x", ""), entry);
    EXPECT_EQ(cRepoImpl::findorload(things(), key.substr(0, 255), ""), entry);
    EXPECT_EQ(cRepoImpl::findorload(things(), key.substr(0, 254), ""), nullptr);
    EnteredThing const whole(key); // is not found by findorload
    EXPECT_EQ(cRepoImpl::findorload(things(), key, ""), entry);
    EXPECT_NE(cRepoImpl::find(things(), key), entry);
}

TEST_F(ModuleReferenceEdge, an_entry_made_outside_of_any_load_is_of_the_main_module) {
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

TEST_F(ModuleReference, findorload_goes_on_where_a_module_does_not_have_the_key) {
    put("plain");
    put("releases");
    put("bare", "bare thing.so");
    cRepositoryEntry *const entry = cRepoImpl::findorload(things(), "bare thing:releases", "plain");
    ASSERT_NE(entry, nullptr) << cModule::last_error();
    EXPECT_EQ(names(things()), "plain thing;stays;bare thing;");
    for (char const *name : {"plain", "releases", "bare thing"}) unload(name);
}

TEST_F(ModuleReference, findorload_stops_where_the_key_is_found) {
    put("plain");
    EnteredThing const here("here");
    filter(true);
    EXPECT_EQ(cRepoImpl::findorload(things(), "here:nowhere", "plain"), thing("here"));
    EXPECT_EQ(asked, "");
    EXPECT_NE(cRepoImpl::findorload(things(), "plain thing:nowhere", "plain"), nullptr);
    EXPECT_EQ(asked, "plain; ");
    unload("plain");
}

TEST_F(ModuleReference, find_counts_a_module_that_is_there_and_lacks_the_key) {
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
    EXPECT_EQ(&cat::find_type("evil:evil"), &cat::type_nil()); // this one makes nothing
    EXPECT_EQ(events(), "evil is there; evil is asked; ");
    EXPECT_EQ(&cat::find_type("evil"), &cat::type_nil());
    EXPECT_EQ(events(), "evil is asked; ");
    unload("evil");
}

// --- the filter ---

TEST_F(ModuleReference, a_refused_name_reads_as_not_found) {
    put("plain");
    filter(false);
    EXPECT_EQ(cModule::load("./plain"), nullptr);
    EXPECT_EQ(cModule::last_error(), "Module './plain' is refused by the program");
    EXPECT_EQ(cRepoImpl::find(things(), "plain thing:plain.so"), nullptr);
    EXPECT_EQ(asked, "./plain; plain.so; ");
    EXPECT_FALSE(is_mapped("./plain.so"));
}

TEST_F(ModuleReference, the_filter_is_asked_about_known_modules_too) {
    put("plain");
    cModule *const module = cModule::load("plain");
    filter(false);
    EXPECT_EQ(cModule::load("plain"), nullptr);
    EXPECT_EQ(cModule::load("quorvanta"), nullptr);
    answer = true;
    EXPECT_EQ(cModule::load("quorvanta"), &cGetMainModule());
    EXPECT_TRUE(module->unload()); // the refused load was not counted
}

TEST_F(ModuleReference, what_the_filter_throws_comes_through) {
    put("plain");
    qrv_set_module_filter([](std::string const &name) -> bool { throw name; });
    EXPECT_THROW(cModule::load("plain"), std::string);
    qrv_set_module_filter(nullptr);
    cModule *const module = cModule::load("plain");
    ASSERT_NE(module, nullptr);
    EXPECT_TRUE(module->unload());
}

TEST_F(ModuleReference, the_filter_is_asked_for_loads_in_a_set_up_too) {
    put("nested");
    put("plain");
    qrv_set_module_filter([](std::string const &name) { return name == "nested"; });
    cModule *const module = cModule::load("nested");
    ASSERT_NE(module, nullptr) << cModule::last_error();
    EXPECT_EQ(events(), "Module 'plain' is refused by the program; ");
    EXPECT_TRUE(module->unload());
}

// --- while text is being read ---

// Reads a text and forgets the value.
void read(std::string const &text) {
    cErrorLog const errors;
    std::istringstream is(text);
    is.imbue(std::locale::classic());
    cAttrScan scan(is, false);
    objref value;
    scan.scan_obj(value, nullptr);
}

// What each way of naming a module brings, whatever a text could have in it.
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

// A type whose `read` looks for everything, as a program's could that is led by the text.
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

TEST_F(Reading, no_type_of_a_text_is_loaded) {
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
    cat::type_hash_ptr()->delitem("P"); // a type that one of them declares
    messages();
}

TEST_F(Reading, no_text_in_a_file_or_a_path_is_loaded) {
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
    EXPECT_EQ(sought, "001000"); // the third tells that a reason is given
    EXPECT_EQ(cModule::last_error(), "Module './evil' is not loaded while text is being read");
    EXPECT_EQ(events(), "");
    EXPECT_FALSE(is_mapped("./evil.so"));
}

TEST_F(Reading, a_module_that_is_there_is_not_counted_while_text_is_read) {
    cModule *const module = cModule::load("evil");
    ASSERT_NE(module, nullptr) << cModule::last_error();
    read("Seeker(1)");
    EXPECT_EQ(sought, "001000");
    EXPECT_EQ(events(), "evil is there; evil is asked; evil is asked; ");
    EXPECT_TRUE(module->unload());
}

TEST_F(Reading, a_program_loads_between_texts) {
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

TEST_F(Reading, an_own_filter_allows_what_it_wants_while_text_is_read) {
    filter(true);
    read("{ a= Seeker(1); }");
    EXPECT_EQ(sought, "110000");
    EXPECT_NE(events().find("evil is there; "), std::string::npos);
    filter(false);
    unload_all("evil");
    EXPECT_EQ(seek_everywhere(), "001000"); // and forbids it to a program
    EXPECT_EQ(events(), "");
    EXPECT_FALSE(is_mapped("./evil.so"));
}

} // namespace
