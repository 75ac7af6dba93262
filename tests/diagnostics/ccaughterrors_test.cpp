#include "qrv/diagnostics/ccaughterrors.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/diagnostics/cfilesearch.h"
#include "qrv/text/file/cfile.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/read/creadreport.h"
#include "tests/support/fixture.h"

#include <functional>
#include <sstream>
#include <stdexcept>

namespace {

class CaughtErrors : public QrvTest {
  protected:
    CaughtErrors() { constant_.setflags(of_const_keys); }

    bool refused() { return !constant_.setattr(make_key("key"), cat::of(1)); }

    cMapObj constant_;
};

constexpr char const *refusal =
    "Setattr in object type 'map', key 'key':   Flag of const key set offended";

std::string first_of(cat::CaughtErrors const &caught) {
    return caught.empty() ? "none" : caught.entries().front().as_string();
}

int read(std::string const &text) {
    std::istringstream is(text);
    cAttrScan scan(is, false);
    objref value;
    return scan.scan_obj(value, nullptr);
}

// A slot on cat::sig_error() that calls a function.
class cOnError {
  public:
    explicit cOnError(std::function<void(cErr &)> act)
        : act_(std::move(act)), slot_(this, &cOnError::take) {
        cat::sig_error().connect(slot_);
    }
    cOnError(cOnError const &) = delete;
    cOnError &operator=(cOnError const &) = delete;
    ~cOnError() = default;

  private:
    void take(cErr &error) { act_(error); }

    std::function<void(cErr &)> act_;
    cSlot1<cOnError, cErr &> slot_;
};

} // namespace

TEST_F(CaughtErrors, a_caught_error_has_its_code_kind_names_and_text) {
    cat::CaughtErrors const caught;
    EXPECT_TRUE(caught.empty());
    EXPECT_TRUE(caught.entries().empty());
    EXPECT_EQ(caught.count(), 0u);
    EXPECT_TRUE(refused());
    ASSERT_EQ(caught.entries().size(), 1u);
    cErr const &error = caught.entries()[0];
    EXPECT_EQ(error.code(), 0x40020000u);
    EXPECT_EQ(error.kind(), cat::ErrorKind::const_keys);
    EXPECT_EQ(error.names().key, "key");
    EXPECT_EQ(error.names().type, "map");
    EXPECT_EQ(error.as_string(), refusal);
    EXPECT_EQ(messages(), "");
}

TEST_F(CaughtErrors, caught_errors_are_neither_thrown_nor_forgiven_with_any_masks) {
    for (cErrHandler const &masks : {cErrHandler(0xFFFFFFFFu), cErrHandler(0, 0xFFFFFFFFu)}) {
        cat::errhandler() = masks;
        {
            cat::CaughtErrors const caught;
            EXPECT_TRUE(refused());
            EXPECT_EQ(caught.entries().at(0).code(), 0x40020000u);
        }
        EXPECT_EQ(cat::errhandler().throw_mask(), masks.throw_mask());
        EXPECT_EQ(cat::errhandler().clear_mask(), masks.clear_mask());
        EXPECT_FALSE(cat::errhandler().isblocked());
    }
    EXPECT_EQ(messages(), "");
}

TEST_F(CaughtErrors, caught_errors_reach_no_slot) {
    int called = 0;
    cOnError const slot([&called](cErr &) { ++called; });
    {
        cat::CaughtErrors const caught;
        EXPECT_TRUE(refused());
        cErr own(0x40000001, "of a program");
        cat::sig_error()(own);
        EXPECT_EQ(caught.count(), 2u);
        EXPECT_EQ(own.code(), 0x40000001u);
    }
    EXPECT_EQ(called, 0);
    EXPECT_TRUE(refused());
    EXPECT_EQ(called, 1);
    EXPECT_EQ(messages(), std::string(refusal) + "\n");
}

TEST_F(CaughtErrors, error_lines_are_caught_instead_of_printed) {
    cat::CaughtErrors caught;
    EXPECT_EQ(constant_.getattrp(""), cat::bad());
    EXPECT_EQ(first_of(caught).substr(0, 31), "ERROR in call of getattrp, path");
    EXPECT_EQ(caught.entries().at(0).kind(), cat::ErrorKind::getattrp_path);
    caught.clear();
    cat::file2string("/no/such/file");
    EXPECT_EQ(first_of(caught), "Cannot open file: /no/such/file");
    EXPECT_EQ(caught.entries().at(0).code(), 0u);
    caught.clear();
    EXPECT_FALSE(write2file(constant_, "/no/such/folder/file", false));
    EXPECT_EQ(first_of(caught), "Cannot open file for write: /no/such/folder/file");
    caught.clear();
    EXPECT_EQ(pGetRuntimeFileName("no such file", nullptr, true), nullptr);
    EXPECT_EQ(first_of(caught), "could not open: no such file");
    EXPECT_EQ(messages(), "");
}

TEST_F(CaughtErrors, errors_in_text_and_files_are_caught) {
    cat::CaughtErrors caught;
    EXPECT_EQ(read("#none"), 4);
    EXPECT_EQ(first_of(caught), "Line 1: : Unknown #-value (no defined const): #none");
    EXPECT_EQ(caught.entries().at(0).code(), 0x40000004u);
    caught.clear();
    objref value;
    EXPECT_FALSE(file2obj("/no/such/file", value));
    EXPECT_EQ(first_of(caught), "Cannot open file: /no/such/file");
    EXPECT_EQ(caught.entries().at(0).kind(), cat::ErrorKind::file_not_opened);
    caught.clear();
    std::string const broken = "{a = #none; b = 2; ";
    std::istringstream is(broken);
    { cAttrScan(is, true).scan_obj(value, nullptr); } // without the guard it prints a summary
    cat::ReadReport const report;
    EXPECT_EQ(read(broken), 0);
    ASSERT_EQ(caught.count(), report.count());
    for (std::size_t i = 0; i < report.count(); ++i)
        EXPECT_EQ(caught.entries()[i].kind(), report.entries()[i].kind);
    EXPECT_EQ(messages(), "");
}

TEST_F(CaughtErrors, the_innermost_guard_catches_an_error) {
    cat::CaughtErrors const outer;
    {
        cat::CaughtErrors const inner;
        EXPECT_TRUE(refused());
        EXPECT_EQ(inner.count(), 1u);
    }
    EXPECT_TRUE(outer.empty());
    EXPECT_TRUE(refused());
    EXPECT_EQ(outer.count(), 1u);
}

TEST_F(CaughtErrors, errors_beyond_the_limit_are_counted) {
    cat::CaughtErrors caught;
    for (std::size_t i = 0; i < cat::CaughtErrors::limit + 2; ++i) EXPECT_TRUE(refused());
    EXPECT_EQ(caught.entries().size(), cat::CaughtErrors::limit);
    EXPECT_EQ(caught.count(), cat::CaughtErrors::limit + 2);
    caught.clear();
    EXPECT_TRUE(caught.empty());
}

TEST_F(CaughtErrors, a_report_inside_a_guard_collects_only_errors_in_text) {
    cat::CaughtErrors const caught;
    cat::ReadReport const report;
    EXPECT_EQ(cat::ReadReport::current(), &report);
    EXPECT_EQ(read("#none"), 4);
    EXPECT_EQ(report.count(), 1u);
    EXPECT_TRUE(caught.empty());
    EXPECT_TRUE(refused());
    EXPECT_EQ(report.count(), 1u);
    EXPECT_EQ(caught.count(), 1u);
    EXPECT_EQ(messages(), "");
}

TEST_F(CaughtErrors, a_guard_inside_a_report_catches_all_errors) {
    cat::ReadReport const report;
    {
        cat::CaughtErrors const caught;
        EXPECT_EQ(cat::ReadReport::current(), nullptr);
        EXPECT_EQ(read("#none"), 4);
        EXPECT_TRUE(refused());
        EXPECT_EQ(constant_.getattrp(""), cat::bad());
        EXPECT_EQ(caught.count(), 3u);
        EXPECT_TRUE(report.empty());
        {
            cat::ReadReport const inner;
            EXPECT_EQ(read("#none"), 4);
            EXPECT_EQ(inner.count(), 1u);
        }
        EXPECT_EQ(caught.count(), 3u);
    }
    EXPECT_EQ(read("#none"), 4);
    EXPECT_EQ(report.count(), 1u);
    EXPECT_EQ(messages(), "");
}

TEST_F(CaughtErrors, a_guard_created_while_text_is_read_catches_the_errors_until_its_end) {
    static std::function<void()> inside;
    typeref const type = make<cTypeObj>("guarded");
    type->set_tmember("newobj", make<cExeMember>(+[](objref) -> objref {
                          inside();
                          return make<cObjD<int>>(7);
                      }));
    ASSERT_TRUE(cat::typemap().datamap().mapitem(make_key("guarded"), type));
    std::size_t caught_inside = 0, of_inner_report = 0;
    inside = [&] {
        {
            cat::CaughtErrors const caught;
            EXPECT_TRUE(refused());
            EXPECT_EQ(read("#none"), 4);
            {
                cat::ReadReport const report;
                EXPECT_EQ(read("#none"), 4);
                EXPECT_TRUE(refused());
                of_inner_report = report.count();
            }
            EXPECT_TRUE(refused());
            caught_inside = caught.count();
        }
        EXPECT_TRUE(refused()); // the outer report collects it
    };
    {
        cat::ReadReport const report;
        read("{a = guarded(1); b = 2; }");
        EXPECT_EQ(caught_inside, 3u);
        EXPECT_EQ(of_inner_report, 2u);
        ASSERT_FALSE(report.empty());
        EXPECT_EQ(report.entries()[0].text, refusal);
    }
    inside = nullptr;
    cat::typemap().datamap().delitem("guarded");
    EXPECT_FALSE(cat::errhandler().isblocked());
    EXPECT_EQ(messages(), "");
}

TEST_F(CaughtErrors, errors_of_user_code_are_caught_even_if_it_changes_the_handler) {
    cSignal1<int> changed;
    std::unique_ptr<cOnError> connected;
    int called = 0;
    auto const act = [&](int) {
        EXPECT_TRUE(refused());
        connected = std::make_unique<cOnError>([&called](cErr &) { ++called; });
        cat::errhandler().silent_mask(0x40000000u);
        EXPECT_TRUE(refused());
    };
    cFunctionSlot1<int, decltype(act)> const slot(act, changed);
    {
        cat::CaughtErrors const caught;
        changed(1);
        EXPECT_EQ(caught.count(), 2u);
    }
    EXPECT_EQ(called, 0);
    EXPECT_EQ(cat::errhandler().silent_mask(), 0x40000000u);
    EXPECT_TRUE(refused());
    EXPECT_EQ(called, 1);
    EXPECT_EQ(messages(), "");
}

TEST_F(CaughtErrors, an_exception_ends_the_guard) {
    try {
        cat::CaughtErrors const caught;
        EXPECT_TRUE(refused());
        throw std::runtime_error("of a slot");
    } catch (std::runtime_error const &) {
    }
    EXPECT_FALSE(cat::ErrorTaker::any());
    EXPECT_TRUE(refused());
    EXPECT_EQ(messages(), std::string(refusal) + "\n");
}

TEST_F(CaughtErrors, a_blocked_handler_stays_blocked) {
    cRef<cShared> const block = cat::errhandler().block();
    {
        cat::CaughtErrors const caught;
        EXPECT_TRUE(refused());
        EXPECT_EQ(caught.count(), 1u);
        EXPECT_TRUE(cat::errhandler().isblocked());
    }
    EXPECT_TRUE(cat::errhandler().isblocked());
}
