// Reads generated text from streams, files and memory, with every function that reads.

#include "qrv/containers/cmapobj.h"
#include "qrv/containers/csetobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/file/cfile.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/read/creadreport.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"
#include "tests/reference/sources.h"
#include "tests/reference/texts.h"
#include "tests/reference/transcript.h"
#include "tests/reference/user_types.h"
#include "tests/reference/world.h"

#include <cstdio>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>

namespace reference {

namespace {

class cWatch : public cat::ReadWatch {
  public:
    void invalid(cObj &object) override { say("invalid " + label(&object)); }
    bool error(cat::ReadError &error) override {
        say("watch sees " + shown(error.text));
        return !world().user.one_in(10);
    }
};

void show_report(cat::ReadReport const &report) {
    for (cat::ReadError const &e : report.entries()) {
        char code[16];
        std::snprintf(code, sizeof code, " %08x ", e.code);
        say("report " + e.file + " " + std::to_string(e.line) + ":" + std::to_string(e.column) +
            "-" + std::to_string(e.end_line) + ":" + std::to_string(e.end_column) + " " +
            shown(e.path) + code + shown(e.text));
    }
    say("report dropped " + std::to_string(report.dropped()));
}

void show_state(std::istream &is, cAttrScan &scan) {
    auto const state = is.rdstate();
    say("stream at " + std::to_string(static_cast<long>(is.tellg())) + " state " +
        std::to_string(static_cast<int>(state)) + " position " + std::to_string(scan.position()) +
        " " + std::to_string(scan.lineno()) + ":" + std::to_string(scan.column()) + " errors " +
        std::to_string(scan.errcount()) + " token " + std::to_string(scan.token().code) + "'" +
        shown(scan.token().text) + "' comment '" + shown(cAttrScan::com_collected()) + "'");
    is.clear(state);
}

void show_value(std::string const &title, objref const &value) {
    cWalk walk;
    walk.value(title, value);
    walk.ranks();
    if (!value || world().input.one_in(3)) return;
    cWriting const writing;
    try {
        say("plain " + shown(cat::as_text(value)));
        cat::ExactText const exact;
        say("exact " + shown(cat::as_text(value)));
        say("failed " + std::to_string(exact.failed()));
    } catch (cErr const &error) {
        say("thrown " + shown(error.as_string()));
    }
}

objref some_target() {
    static constexpr char const *texts[] = {
        "{a=1;b={x=2};c=[1,2]}", "[1,2,{a=1}]",    "<1,2>", "{}",
        "{a=Box(t);b=Key(k)}",   "{a=<1,2>;b=1.5}"};
    objref target;
    world().calm = true;
    cObj::readobj(world().input.pick(texts), target);
    world().calm = false;
    if (!target || world().input.one_in(4))
        target = new_user_value(world().input.pick(user_type_names), "t");
    if (world().input.one_in(3)) watch_changes(*target);
    if (world().input.one_in(6)) give_own_method(*target);
    if (world().input.one_in(8))
        target->setflags(world().input.one_in(2) ? of_const_keys : of_const);
    if (auto *const map = dynamic_cast<cMapObj *>(target.get()); map && world().input.one_in(8))
        map->set_entrytype(&cat::type_int());
    return target;
}

// One reading with one of the functions; `false` at the end of the input.
bool read_one(std::istream &is, cAttrScan &scan, unsigned way, std::vector<objref> &results) {
    objref result;
    int delim = -99;
    int code = -99;
    switch (way) {
    case 0: {
        result = some_target();
        say(std::string("read into ") + (result->read(is) ? "true" : "false"));
        break;
    }
    case 1: {
        cMapObj map;
        code = map.datamap().read_hash(is, world().input.one_in(2) ? nullptr : &cat::type_map());
        result = cat::of("entries");
        cWalk walk;
        walk.hash("entries", map.datamap());
        break;
    }
    case 2:
        code = cat::scan_container(is, result, world().input.one_in(2));
        break;
    case 3: {
        std::string text;
        code = scan.gettok();
        code = scan.read_subentry(cat::Brackets(code), text);
        say("entry '" + shown(text) + "'");
        break;
    }
    case 4:
        code = scan.read_to_delimiter(world().input.one_in(2) ? "}" : "");
        break;
    case 5:
        code = scan.gettok();
        scan.read_to_endcontainer(code);
        break;
    default:
        code = scan.scan_obj(result, &delim);
        break;
    }
    say("way " + std::to_string(way) + " code " + std::to_string(code) + " delim " +
        std::to_string(delim));
    if (result) results.push_back(result);
    return way >= 6 ? code == 0 : code > 0;
}

void read_stream(std::string const &text, std::vector<objref> &results) {
    cRandom &random = world().input;
    cSource source(text, random.below(5));
    unsigned const way = random.below(18);
    cAttrScan scan(*source, random.one_in(2));
    if (random.one_in(3)) scan.return_com(true, nullptr);
    if (random.one_in(8)) scan.set_oneline();
    if (random.one_in(8)) scan.set_filename("name.attr");
    if (random.one_in(40)) scan.setdump(true);
    for (int i = 0; i < 4; ++i) {
        bool more = false;
        try {
            more = read_one(*source, scan, way, results);
        } catch (std::exception const &error) {
            say(std::string("thrown ") + shown(error.what()));
        }
        show_state(*source, scan);
        if (!more) break;
    }
}

void read_file(std::string const &text, std::vector<objref> &results) {
    std::ofstream("text.attr", std::ios::binary) << text;
    objref result;
    bool good = false;
    if (world().input.one_in(2)) {
        good = file2obj("text.attr", result);
    } else {
        result = make<cMapObj>();
        good = file2map("text.attr", static_cast<cMapObj &>(*result));
    }
    say(std::string("file ") + (good ? "good" : "bad"));
    results.push_back(result);
}

void read_memory(std::string const &text, std::vector<objref> &results) {
    objref result;
    int delim = -99;
    int const code = cObj::readobj(text.c_str(), result, &delim);
    say("code " + std::to_string(code) + " delim " + std::to_string(delim));
    results.push_back(result);
}

void read_path(std::string const &text, std::vector<objref> &results) {
    objref const target = some_target();
    say(std::string("statements ") +
        (target->setattrp(text, world().input.one_in(2)) ? "good" : "bad"));
    results.push_back(target);
}

} // namespace

void read_mode() {
    cRandom &random = world().input;
    cTexts texts(random);
    std::string const text = texts.text();
    say("text " + shown(text));
    std::optional<cReplaced> replaced;
    if (random.one_in(8)) replaced.emplace(1 + random.below(3));
    if (random.one_in(8)) cat::max_read_depth = static_cast<int>(2 + random.below(10));
    world().calm = random.one_in(3);
    std::vector<objref> results;
    std::uint32_t const census = cObjBase::ob_count();
    {
        cWatch watch;
        std::optional<cat::ReadReport> report;
        if (random.one_in(3)) report.emplace(random.one_in(8) ? 2 : 1000);
        if (report && random.one_in(3)) report->watch(&watch);
        try {
            switch (random.below(10)) {
            case 0:
                read_file(text, results);
                break;
            case 1:
                read_memory(text, results);
                break;
            case 2:
                if (random.one_in(3)) {
                    read_path(text, results);
                    break;
                }
                [[fallthrough]];
            default:
                read_stream(text, results);
                break;
            }
        } catch (std::exception const &error) {
            say(std::string("thrown ") + shown(error.what()));
        }
        if (report) show_report(*report);
    }
    say("objects " + std::to_string(static_cast<int>(cObjBase::ob_count() - census)));
    for (objref const &result : results) show_value("result", result);
    while (!results.empty()) {
        results.pop_back();
        say("objects " + std::to_string(static_cast<int>(cObjBase::ob_count() - census)));
    }
}

} // namespace reference
