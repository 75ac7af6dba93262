// Choices: a choice is read as its key, and set by it.

#include "qrv/core/ctypescope.h"
#include "tests/value/value_support.h"

#include <map>

namespace choice_test {
enum class Mode { off, slow, fast };
QRV_DESCRIBE_ENUM(Mode, off, slow, fast)
} // namespace choice_test

using namespace value_test;

namespace {

class Choice : public Quiet {
  protected:
    Choice() {
        qrv::declare_choice("Mode", {{"off", 0}, {"slow", 50}, {"fast", 100}});
        qrv::declare("Axis")
            .required<std::string>("name")
            .with_default("limit", 2.5)
            .choice("mode", "Mode", "off");
    }
    static qrv::value axis() {
        return qrv::type("Axis").make(qrv::map{{"name", "x"}, {"mode", "slow"}});
    }

  private:
    cat::TypeScope scope_;
};

} // namespace

TEST_F(Choice, is_read_as_its_key) {
    qrv::value const x = axis();
    EXPECT_TRUE(x["mode"].is_object());
    EXPECT_EQ(x["mode"].get<std::string>(), "slow");
    EXPECT_EQ(x.get_or("mode", "none"), "slow");
    EXPECT_EQ(x["mode"].get<choice_test::Mode>(), choice_test::Mode::slow);
    EXPECT_EQ(x.at("mode/value"), 50);
    EXPECT_EQ(x.at("mode/key"), "slow");
    EXPECT_EQ(thrown<qrv::type_error>([&] { x.get<int>("mode"); }),
              "mode: expected int, but it is an object of type Mode");
}

TEST_F(Choice, a_choice_with_int_keys_is_read_as_an_int) {
    qrv::value const speed = read("{Speed= choice([a, b]); x= Speed(1)}").at("x");
    EXPECT_EQ(speed.get<int>(), 1);
    EXPECT_EQ(speed.get<unsigned char>(), 1);
    EXPECT_THROW(speed.get<std::string>(), qrv::type_error);
}

TEST_F(Choice, an_undefined_choice_has_no_key) {
    qrv::value const mode = read("{x= Mode()}").at("x");
    EXPECT_THROW(mode.get<std::string>(), qrv::type_error);
    EXPECT_EQ(mode.get_if<std::string>(), std::nullopt);
    EXPECT_FALSE(mode == "off");
}

TEST_F(Choice, equals_the_text_of_its_key) {
    qrv::value x = axis();
    EXPECT_TRUE(x.at("mode") == "slow");
    EXPECT_TRUE(x["mode"] == std::string("slow"));
    EXPECT_TRUE("slow" == x["mode"]);
    EXPECT_FALSE(x["mode"] == "fast");
    EXPECT_FALSE(x["mode"] < "zzz" || x["mode"] > "fast");
    EXPECT_FALSE(x.at("mode") == qrv::value("slow")); // another type
    EXPECT_TRUE(x.at("mode") == axis().at("mode"));
}

TEST_F(Choice, is_assigned_a_key_that_its_type_has) {
    qrv::value const mode = axis().at("mode");
    qrv::value same = mode;
    same.assign("fast");
    EXPECT_TRUE(mode == "fast");
    same.assign("fast");
    same.assign(axis().at("mode"));
    EXPECT_TRUE(mode == "slow");
    EXPECT_EQ(thrown<qrv::type_error>([&] { same.assign("warp"); }),
              "expected a choice of type 'Mode', but it is a string: \"warp\"");
    EXPECT_EQ(thrown<qrv::type_error>([&] { same.assign(1); }),
              "expected a choice of type 'Mode', but it is an int: 1");
    qrv::declare_choice("Other", {"left"});
    EXPECT_EQ(thrown<qrv::type_error>([&] { same.assign(qrv::type("Other").make("left")); }),
              "expected a choice of type 'Mode', but it is an object of type Other");
    EXPECT_THROW(same.assign(read("[slow]")), qrv::type_error);
    EXPECT_THROW(same.assign(nullptr), qrv::type_error);
    EXPECT_TRUE(mode == "slow");
}

TEST_F(Choice, a_choice_that_refuses_a_key_reports_no_change) {
    qrv::value mode = axis().at("mode");
    int changes = 0;
    auto const watch = mode.on_change([&](qrv::change const &) { ++changes; });
    EXPECT_THROW(mode.assign("warp"), qrv::type_error);
    EXPECT_EQ(changes, 0);
    mode.assign("fast");
    EXPECT_EQ(changes, 1);
}

TEST_F(Choice, an_attribute_of_a_choice_type_is_set_by_its_key) {
    qrv::value x = axis();
    qrv::value const before = x.at("mode");
    x["mode"] = "fast";
    EXPECT_TRUE(x["mode"] == "fast");
    EXPECT_EQ(x["mode"].type_name(), "Mode");
    EXPECT_TRUE(before == "slow"); // another object
    x.set("mode", "off");
    EXPECT_TRUE(x["mode"] == "off");
    x["mode"] = choice_test::Mode::slow;
    EXPECT_TRUE(x["mode"] == "slow");
    x.merge(qrv::map{{"mode", "fast"}});
    EXPECT_TRUE(x["mode"] == "fast");
    qrv::value machine = qrv::map{{"axes", qrv::vector{x, axis()}}};
    EXPECT_EQ(thrown<qrv::type_error>([&] { machine.set("axes/1/mode", "warp"); }),
              "axes/1/mode: expected a choice of type 'Mode', but it is a string: \"warp\"");
    EXPECT_TRUE(machine.at("axes/1/mode") == "slow");
}

TEST_F(Choice, only_choices_and_numbers_are_converted_to_the_type_of_an_attribute) {
    qrv::value x = axis();
    x["limit"] = 7;
    EXPECT_EQ(x.at("limit"), 7.0);
    x["limit"] = 0.5F;
    EXPECT_EQ(x.at("limit"), 0.5);
    EXPECT_EQ(thrown<qrv::type_error>([&] { x["limit"] = "high"; }),
              "limit: FIXED TYPE attribute, key 'limit' in object type 'Axis'");
    EXPECT_THROW(x["name"] = x["mode"], qrv::type_error);
    EXPECT_THROW(x["mode"] = qrv::map{}, qrv::type_error);
    EXPECT_EQ(x.at("limit"), 0.5);
    EXPECT_EQ(x.at("name"), "x");
}

TEST_F(Choice, as_an_attribute_cannot_be_assigned_an_unknown_key) {
    qrv::value x = axis();
    EXPECT_EQ(thrown<qrv::error>([&] { x["speed"] = "slow"; }).substr(0, 7), "speed: ");
    EXPECT_FALSE(x.contains("speed"));
}

TEST_F(Choice, keys_are_read_into_containers) {
    qrv::value const v = read("{a= Mode(slow); b= Mode(off)}");
    auto const modes = v.get<std::map<std::string, choice_test::Mode>>();
    EXPECT_EQ(modes.at("a"), choice_test::Mode::slow);
    EXPECT_EQ((v.get<std::map<std::string, std::string>>().at("b")), "off");
    EXPECT_EQ(v.get_or("a", choice_test::Mode::off), choice_test::Mode::slow);
}
