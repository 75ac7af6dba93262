// Trees and text: reading, writing, deep copies, destroying, and the memory that a tree uses after
// it was read. Our text has many lines; the peers read compact JSON and write it indented.
#include "bench/data.h"
#include "bench/row.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"

#include <nlohmann/json.hpp>
#include <rapidjson/document.h>
#include <rapidjson/prettywriter.h>

#include <locale>
#include <memory>
#include <sstream>

namespace {

using nlohmann::json;

objref read_attr(std::string const &text) {
    std::istringstream is(text);
    is.imbue(std::locale::classic());
    cAttrScan scan(is, false);
    scan.return_com(true);
    objref tree;
    if (scan.scan_obj(tree, nullptr) != 0 || scan.errcount() != 0) stop("the text does not read");
    return tree;
}

json to_json(objref const &value) {
    if (value->is_map()) {
        json map = json::object();
        cAttrHash const &hash = static_cast<cMapObj const &>(*value).datamap();
        for (auto const *node = hash.first(); node; node = hash.next(node))
            map[node->key_as_string()] = to_json(node->valref());
        return map;
    }
    if (value->is_vector()) {
        json list = json::array();
        cAttrHash const &hash = static_cast<cMapObj const &>(*value).datamap();
        for (auto const *node = hash.first(); node; node = hash.next(node))
            list.push_back(to_json(node->valref()));
        return list;
    }
    cTypeObj const *const type = &value->type();
    if (type == &cat::type_int()) return static_cast<cObjDR<int> const &>(*value).val();
    if (type == &cat::type_double()) return static_cast<cObjDR<double> const &>(*value).val();
    if (type == &cat::type_bool()) return static_cast<cObjDR<bool> const &>(*value).val();
    if (type == &cat::type_string()) return static_cast<cObjDR<std::string> const &>(*value).val();
    stop("the tree has a value of type " + type->name());
}

std::string answer_of(objref const &tree) { return to_json(tree).dump(); }
std::string answer_of(rapidjson::Document const &tree) {
    rapidjson::StringBuffer text;
    rapidjson::Writer<rapidjson::StringBuffer> writer(text);
    tree.Accept(writer);
    return json::parse(text.GetString()).dump();
}

// --- reading

cRounds read_qrv(std::string const &text) {
    return [text](cRound &round) {
        objref tree;
        round.measure([&] { tree = read_attr(text); });
        round.answer = [tree] { return answer_of(tree); };
    };
}

cRounds read_nlohmann(std::string const &text) {
    return [text](cRound &round) {
        auto const tree = std::make_shared<json>();
        round.measure([&] { *tree = json::parse(text); });
        round.answer = [tree] { return tree->dump(); };
    };
}

cRounds read_rapidjson(std::string const &text) {
    return [text](cRound &round) {
        auto const tree = std::make_shared<rapidjson::Document>();
        round.measure([&] { tree->Parse(text.data(), text.size()); });
        round.answer = [tree] { return answer_of(*tree); };
    };
}

// --- writing

template <class Write> cRounds write_qrv(std::string const &text, Write const &write) {
    return [tree = read_attr(text), write](cRound &round) {
        std::string written;
        round.measure([&] { written = write(tree); });
        round.answer = [written = std::move(written)] { return answer_of(read_attr(written)); };
    };
}

cRounds write_nlohmann(std::string const &text) {
    return [tree = json::parse(text)](cRound &round) {
        std::string written;
        round.measure([&] { written = tree.dump(4); });
        round.answer = [written = std::move(written)] { return json::parse(written).dump(); };
    };
}

cRounds write_rapidjson(std::string const &text) {
    auto const tree = std::make_shared<rapidjson::Document>();
    tree->Parse(text.data(), text.size());
    return [tree](cRound &round) {
        std::string written;
        round.measure([&] {
            rapidjson::StringBuffer buffer;
            rapidjson::PrettyWriter<rapidjson::StringBuffer> writer(buffer);
            tree->Accept(writer);
            written.assign(buffer.GetString(), buffer.GetSize());
        });
        round.answer = [written = std::move(written)] { return json::parse(written).dump(); };
    };
}

// --- copying and destroying

cRounds copy_qrv(std::string const &text) {
    return [tree = read_attr(text)](cRound &round) {
        objref copy;
        round.measure([&] {
            copy = tree->clone();
            if (!cat::detach(copy, true)) stop("the copy is not deep");
        });
        round.answer = [copy] { return answer_of(copy); };
    };
}

cRounds copy_nlohmann(std::string const &text) {
    return [tree = json::parse(text)](cRound &round) {
        auto const copy = std::make_shared<json>();
        round.measure([&] { *copy = tree; });
        round.answer = [copy] { return copy->dump(); };
    };
}

// The answer is computed from the count of living objects, so it is wrong if an object remains.
cRounds destroy_qrv(std::string const &text) {
    return [text](cRound &round) {
        auto const before = cObj::ob_count();
        objref tree = read_attr(text);
        round.measure([&] { tree = nullptr; });
        auto const left = cObj::ob_count() - before;
        round.answer = [left] { return std::to_string(left); };
    };
}

cRounds destroy_nlohmann(std::string const &text) {
    return [text](cRound &round) {
        json tree = json::parse(text);
        round.measure([&] { tree = nullptr; });
        auto const left = tree.size();
        round.answer = [left] { return std::to_string(left); };
    };
}

// --- the rows

std::string whole_tree(cData const &data) { return json::parse(data.json).dump(); }
std::string nothing_left(cData const &) { return "0"; }

template <class Rounds> cSide side(char const *library, std::string cData::*text,
                                   Rounds const &rounds,
                                   std::string (*answer)(cData const &) = whole_tree) {
    return {library, [=](std::string const &size) {
                cData const data = data_of(size);
                return cPrepared{data.entries, answer(data), rounds(data.*text)};
            }};
}

template <class Write> std::vector<cSide> writing(Write const &write) {
    auto const ours = [write](std::string const &text) { return write_qrv(text, write); };
    return {side("qrv", &cData::attr, ours), side("nlohmann", &cData::json, write_nlohmann),
            side("rapidjson", &cData::json, write_rapidjson)};
}

std::string as_exact_text(objref const &tree) {
    cat::ExactText const exact;
    return cat::as_text(tree);
}

} // namespace

std::vector<cWork> text_works() {
    std::vector<std::string> const trees = {"100k", "1M", "10M"};
    std::vector<cSide> const read = {side("qrv", &cData::attr, read_qrv),
                                     side("nlohmann", &cData::json, read_nlohmann),
                                     side("rapidjson", &cData::json, read_rapidjson)};
    return {
        {"read", trees, {"1M", "10M"}, read},
        {"read", {"1600", "16000", "160000"}, {"160000"}, read},
        {"read", {"100kv", "1Mv", "10Mv"}, {"1Mv"}, read},
        {"write", trees, {"1M"}, writing(cat::as_text)},
        {"write_exact", trees, {"1M"}, writing(as_exact_text)},
        {"copy",
         trees,
         {"1M"},
         {side("qrv", &cData::attr, copy_qrv), side("nlohmann", &cData::json, copy_nlohmann)}},
        {"destroy",
         trees,
         {"1M"},
         {side("qrv", &cData::attr, destroy_qrv, nothing_left),
          side("nlohmann", &cData::json, destroy_nlohmann, nothing_left)}},
    };
}
