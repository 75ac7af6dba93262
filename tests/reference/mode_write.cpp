// Writes random values, in plain and in exact form, to each kind of target. The calls of a target
// are logged where a program could see them.

#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/diagnostics/cerr.h"
#include "qrv/text/file/cfile.h"
#include "qrv/text/read/creadreport.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"
#include "tests/reference/transcript.h"
#include "tests/reference/trees.h"
#include "tests/reference/user_types.h"
#include "tests/reference/world.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iomanip>
#include <locale>
#include <optional>
#include <sstream>
#include <stdexcept>

namespace reference {

namespace {

// Logs its calls; fails or throws after a number of characters.
class cLoggingBuffer : public std::streambuf {
  public:
    cLoggingBuffer() = default;
    explicit cLoggingBuffer(int room, bool throws) : room_(room), throws_(throws) {}

  protected:
    int overflow(int c) override {
        say("overflow " + shown(std::string(1, static_cast<char>(c))));
        return has_room(1) ? traits_type::not_eof(c) : traits_type::eof();
    }
    std::streamsize xsputn(char const *bytes, std::streamsize count) override {
        say("xsputn '" + shown(std::string(bytes, static_cast<size_t>(count))) + "'");
        return has_room(static_cast<int>(count)) ? count : 0;
    }
    int sync() override {
        say("sync");
        return 0;
    }

  private:
    bool has_room(int count) {
        if (room_ < 0) return true;
        if (room_ >= count) {
            room_ -= count;
            return true;
        }
        if (throws_) throw std::runtime_error("the target breaks");
        return false;
    }

    int room_ = -1;
    bool throws_ = false;
};

// A string buffer, but not exactly std::stringbuf.
class cWatchedBuffer : public std::stringbuf {
  protected:
    std::streamsize xsputn(char const *bytes, std::streamsize count) override {
        say("put " + std::to_string(count));
        return std::stringbuf::xsputn(bytes, count);
    }
    int sync() override {
        say("sync");
        return std::stringbuf::sync();
    }
};

struct cGrouping : std::numpunct<char> {
    char do_thousands_sep() const override { return '.'; }
    char do_decimal_point() const override { return ','; }
    std::string do_grouping() const override { return "\3"; }
    std::string do_truename() const override { return "wahr"; }
};

void change_format(std::ostream &os) {
    cRandom &random = world().input;
    switch (random.below(12)) {
    case 0:
        os << std::hex << std::showbase;
        break;
    case 1:
        os << std::setprecision(static_cast<int>(random.below(12)));
        break;
    case 2:
        os << std::setw(static_cast<int>(random.below(20))) << std::setfill('*');
        break;
    case 3:
        os << std::fixed << std::showpos;
        break;
    case 4:
        os << std::scientific << std::uppercase;
        break;
    case 5:
        os << std::boolalpha << std::left << std::setfill('_');
        break;
    case 6:
        os.imbue(std::locale(std::locale::classic(), new cGrouping));
        break;
    case 7:
        os << std::unitbuf;
        break;
    case 8:
        os.exceptions(std::ios::badbit | std::ios::failbit);
        break;
    case 9:
        os.setstate(world().input.one_in(2) ? std::ios::failbit : std::ios::eofbit);
        break;
    case 10:
        os << std::showpoint << std::internal;
        break;
    default:
        os << std::setw(3);
        break;
    }
}

void write_by_some_way(objref const &value, std::ostream &os) {
    auto const *const map = dynamic_cast<cMapObj const *>(value.get());
    unsigned const way = world().input.below(10);
    bool good = false;
    if (way == 0) {
        good = value->write(os);
    } else if (way <= 2 && map) {
        static constexpr std::array formats{"sc", "wc", "", "s", "w"};
        cTypeObj *const types[] = {nullptr, &cat::type_map(), &cat::type_vector(), &value->type()};
        good =
            map->datamap().write_hash(os, world().input.pick(formats), world().input.pick(types));
    } else if (way == 3 && map && map->size() > 0) {
        cAttrNode const *const node =
            map->datamap().findpos(world().input.below(static_cast<unsigned>(map->size())));
        node->hold();
        good = node->write(os);
        node->unhold();
    } else {
        good = value->writeobj(os);
    }
    say(std::string("written ") + (good ? "true" : "false") + " state " +
        std::to_string(static_cast<int>(os.rdstate())) + " width " + std::to_string(os.width()) +
        " flags " + std::to_string(static_cast<unsigned>(os.flags())));
}

// All writes use one stream object, once or several times.
void write_stream(objref const &value, std::ostream &os) {
    if (world().input.one_in(3)) change_format(os);
    std::ostringstream tied;
    if (world().input.one_in(20)) os.tie(&tied);
    for (unsigned n = world().input.one_in(4) ? 2 : 1; n; --n) {
        try {
            write_by_some_way(value, os);
        } catch (std::exception const &error) {
            say(std::string("thrown ") + shown(error.what()));
        }
    }
    os.tie(nullptr);
}

void write_file(objref const &value) {
    bool const good = write2file(*value, "written.attr", world().input.one_in(2));
    std::ifstream file("written.attr", std::ios::binary);
    std::ostringstream bytes;
    bytes << file.rdbuf();
    say(std::string("file ") + (good ? "true " : "false ") + shown(bytes.str()));
}

void write_value(objref const &value) {
    cRandom &random = world().input;
    switch (random.below(12)) {
    case 0: {
        cLoggingBuffer buffer;
        std::ostream os(&buffer);
        return write_stream(value, os);
    }
    case 1: {
        cLoggingBuffer buffer(static_cast<int>(random.below(60)), random.one_in(2));
        std::ostream os(&buffer);
        return write_stream(value, os);
    }
    case 2: {
        cWatchedBuffer buffer;
        std::ostream os(&buffer);
        write_stream(value, os);
        return say("text " + shown(buffer.str()));
    }
    case 3:
        if (random.one_in(4)) return write_file(value);
        [[fallthrough]];
    case 4:
        return say("text " + shown(cat::as_text(value)) + " string " +
                   shown(cat::as_string(value)));
    case 5: { // the string already has text, and the position isn't its end
        std::stringstream os("before the text", random.one_in(2)   ? std::ios::in | std::ios::out
                                                : random.one_in(2) ? std::ios::out | std::ios::ate
                                                                   : std::ios::in);
        if (random.one_in(2)) os.seekp(random.below(8));
        write_stream(value, os);
        return say("text " + shown(os.str()) + " at " +
                   std::to_string(static_cast<long>(os.tellp())));
    }
    default: {
        std::ostringstream os;
        write_stream(value, os);
        return say("text " + shown(os.str()) + " at " +
                   std::to_string(static_cast<long>(os.tellp())));
    }
    }
}

} // namespace

void write_mode() {
    cRandom &random = world().input;
    std::optional<cReplaced> replaced;
    if (random.one_in(5)) replaced.emplace(1 + random.below(3));
    std::uint32_t const census = cObjBase::ob_count();
    {
        cTrees trees(random);
        objref const value = trees.tree();
        if (random.one_in(4)) world().written.push_back(trees.tree());
        if (random.one_in(3)) world().written.push_back(value);
        trees.forget();
        world().calm = random.one_in(3);
        std::optional<cat::ReadReport> report;
        if (random.one_in(6)) report.emplace();
        cWriting const writing;
        for (unsigned n = 1 + random.below(2); n; --n) {
            std::optional<cat::ExactText> exact;
            if (random.one_in(2)) exact.emplace();
            say(exact ? "exact" : "plain");
            try {
                write_value(value);
            } catch (std::exception const &error) {
                say(std::string("thrown ") + shown(error.what()));
            }
            if (exact) say("failed " + std::to_string(exact->failed()));
        }
        if (report) say("reported " + std::to_string(report->count()));
        world().written.clear();
        cWalk walk;
        walk.value("value", value);
    }
    say("objects " + std::to_string(static_cast<int>(cObjBase::ob_count() - census)));
}

} // namespace reference
