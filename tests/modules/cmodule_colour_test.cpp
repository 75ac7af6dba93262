// The example module: two types created by factories, an entry of an interface that the module
// defines, and unloading, which fails while anything of the module is in use.
#include "examples/modules/colour/colour.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypeobj.h"
#include "qrv/modules/cmodule.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"
#include "tests/modules/loading.h"

namespace {

class ColourModule : public Loading {
  protected:
    ColourModule() {
        std::filesystem::create_directories("modules");
        std::filesystem::copy_file(test::binary_file("bin/modules/colour.so"), "modules/colour.so");
        module_ = cModule::load("colour");
        EXPECT_NE(module_, nullptr) << cModule::last_error();
    }
    ~ColourModule() override {
        forget_types();
        EXPECT_TRUE(cModule::unload(module_));
        EXPECT_FALSE(is_mapped("modules/colour.so"));
    }

    // Does what a program does before it unloads the module.
    static void forget_types() {
        for (char const *name : {"palette", "color"}) cat::typemap().datamap().delitem(name);
    }
    static objref read(std::string const &text) {
        objref value;
        cObj::readobj(text.c_str(), value);
        return value;
    }
    static std::string written(std::string const &text) {
        cat::ExactText const exact;
        objref const value = read(text);
        return value ? cat::as_text(value) : "null";
    }

    cModule *module_;
};

} // namespace

TEST_F(ColourModule, a_colour_is_read_and_written) {
    EXPECT_EQ(written("color(255 128 0)"), "color(255 128 0)");
    EXPECT_EQ(written("color(  0\n0\t7 )"), "color(0 0 7)");
    EXPECT_EQ(messages(), "");
}

TEST_F(ColourModule, an_invalid_colour_fails) {
    for (char const *text : {"", "1 2", "1 2 3 4", "256 0 0", "-1 0 0", "a b c", "1 2 3 x"}) {
        EXPECT_EQ(written("color(" + std::string(text) + ")"), "null") << text;
        EXPECT_EQ(messages(), ": Failed to read value, type color\n") << text;
    }
}

TEST_F(ColourModule, colours_are_compared_and_ordered) {
    objref const a = read("color(1 2 3)");
    EXPECT_TRUE(a->equal(read("color(1 2 3)")));
    EXPECT_FALSE(a->equal(read("color(1 2 4)")));
    EXPECT_TRUE(a->less(*read("color(1 3 0)")));
    EXPECT_FALSE(a->less(*read("color(1 2 3)")));
    EXPECT_FALSE(a->equal(cat::of(1)));
}

TEST_F(ColourModule, a_colour_can_be_a_key) {
    EXPECT_EQ(written("{color(1 2 3)= a; color(4 5 6)= b; color(1 2 3)= c; }"),
              "{color(1 2 3)= c; color(4 5 6)= b; }");
    objref const map = read("{color(1 2 3)= a; }");
    EXPECT_EQ(cat::as_string(map->getattr(read("color(1 2 3)"))), "a");
    EXPECT_TRUE(map->getattr(read("color(3 2 1)")) == cat::badfind());
}

TEST_F(ColourModule, strings_and_numbers_are_converted) {
    cErrHandler const before = cat::errhandler();
    cat::errhandler() = cErrHandler(0, 0, 0xFFFFFFFFU);
    objref const colour = cat::find_type("color").newobj();
    EXPECT_TRUE(colour->assign(cat::of("#ff8000")));
    EXPECT_EQ(cat::as_text(colour), "color(255 128 0)");
    EXPECT_TRUE(colour->assign(cat::of(0x0000FF)));
    EXPECT_EQ(cat::as_text(colour), "color(0 0 255)");
    for (char const *text : {"", "#", "ff8000", "#ff800", "#ff80000", "#gg8000", "#-f8000", "red"})
        EXPECT_FALSE(colour->assign(cat::of(text))) << text;
    EXPECT_FALSE(colour->assign(cat::of(-1)));
    EXPECT_FALSE(colour->assign(cat::of(0x1000000)));
    EXPECT_FALSE(colour->assign(cat::of(1.5)));
    EXPECT_EQ(cat::as_text(colour), "color(0 0 255)");
    objref const copy = colour->clone();
    EXPECT_TRUE(copy->equal(*colour));
    EXPECT_TRUE(copy != colour);
    cat::errhandler() = before;
}

TEST_F(ColourModule, a_palette_holds_colours_only) {
    EXPECT_EQ(written("palette(sky= color(0 0 255); sun= \"#ffff00\")"),
              "palette(sky= color(0 0 255); sun= color(255 255 0); )");
    EXPECT_EQ(written("palette(sky= blue)"), "null");
    messages();
    EXPECT_EQ(written("palette()"), "palette()");
}

TEST_F(ColourModule, named_colours_are_found_by_their_interface) {
    cRepositoryEntry *const entry = cRepoImpl::find(cRepoImpl::get(typeid(cColourNames)), "web");
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(cRepoImpl::module(entry), module_);
    auto const *const names = static_cast<cColourNames *>(cRepoImpl::ptr(entry));
    EXPECT_EQ(names->name_of(0xFFA500), "orange");
    EXPECT_EQ(names->name_of(0x123456), "");
}

TEST_F(ColourModule, it_stays_loaded_while_a_type_or_an_object_exists) {
    objref colour = read("color(1 2 3)");
    objref palette = read("palette(a= color(1 2 3))");
    EXPECT_FALSE(module_->canunload());
    EXPECT_FALSE(module_->unload());
    objref const held_type = objref::share(&cat::find_type("palette"));
    forget_types();
    EXPECT_FALSE(module_->unload());
    palette = nullptr;
    EXPECT_EQ(module_->usage(), 2); // the colour, and the type of palettes
    colour = nullptr;
    EXPECT_EQ(module_->usage(), 1);
    EXPECT_FALSE(module_->unload());
}

TEST_F(ColourModule, a_type_remains_in_use_after_its_objects_are_destroyed) {
    read("color(1 2 3)");
    EXPECT_EQ(module_->usage(), 1);
    EXPECT_EQ(written("color(4 5 6)"), "color(4 5 6)");
    EXPECT_EQ(module_->usage(), 1);
}

TEST_F(ColourModule, can_be_loaded_again_after_unloading) {
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(written("color(1 2 3)"), "color(1 2 3)");
        forget_types();
        ASSERT_TRUE(module_->unload());
        EXPECT_EQ(written("color(1 2 3)"), "null"); // the type is unknown now
        EXPECT_EQ(messages(), ": Value with unknown type='color\n");
        module_ = cModule::load("colour");
        ASSERT_NE(module_, nullptr) << cModule::last_error();
    }
}
