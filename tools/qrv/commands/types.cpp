// `types`: prints the known types with their properties, in the order of their registration: as
// text with a paragraph for each, or as a JSON array of objects.

#include "qrv/containers/cattspec.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/ctypeobj.h"
#include "qrv/core/ctypes.h"
#include "tools/qrv/commands/command.h"
#include "tools/qrv/commands/shared.h"
#include "tools/qrv/output/diagnostic.h"
#include "tools/qrv/output/escaped.h"
#include "tools/qrv/process/modules.h"
#include "tools/qrv/reading/reading.h"
#include "tools/qrv/rules/source.h"
#include "tools/qrv/verify/mismatch.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace {

struct cOptions {
    std::optional<std::string> file;
    std::string format = "text";
    int max_errors = default_max_errors;
};

constexpr char const *help =
    "Examples:\n"
    "  qrv types shapes.attr                    also lists the types of the file, with their keys\n"
    "  qrv types --module ./colour              also lists the types of a module\n"
    "  qrv types --format=json shapes.attr | jq '.[].name'";

using cJson = nlohmann::ordered_json;

struct cType {
    cTypeObj &type;
    std::string module;
    std::optional<cPlace> place; // the position of its declaration in the file
    bool built_in() const { return module.empty() && !place; }
};

std::vector<cType> known(cSource &source) {
    constexpr cPlace after_all{~0u, 1};
    for (std::string const &name : factories()) cat::find_type(name);
    std::vector<cType> all;
    cAttrHash const &types = cat::typemap().datamap();
    for (cAttrNode const *node = types.first(); node; node = types.next(node))
        if (auto *const type = dynamic_cast<cTypeObj *>(node->valref().get()))
            all.push_back({*type, module_of(*type), source.declared(type->name(), after_all)});
    return all;
}

std::vector<std::string> members(cTypeObj const &type) {
    std::vector<std::string> names;
    for (cAttrNode const *node = type.tmmap().first(); node; node = type.tmmap().next(node))
        names.push_back(node->key_as_string());
    return names;
}

// The converters of a type. Types that a file declares have none.
std::vector<std::string> converters(cType const &type, std::vector<cType> const &all) {
    std::vector<std::string> names;
    if (type.place) return names;
    for (cType const &source : all) {
        if (source.place) break; // types of the file come last
        if (type.type.converter(source.type)) names.push_back(source.type.name());
    }
    return names;
}

char const *rule_of(cAttspec const &spec) {
    if (spec.is_required()) return "required";
    if (spec.is_implied()) return "implied";
    return spec.is_fixref() ? "fixed" : "default";
}

// A table. The first row is its head.
using cRows = std::vector<std::vector<std::string>>;

cAttrHash const *entries(cTypeObj const &type, char const *member) {
    objref const value = type.tmember(member);
    auto const *const map = dynamic_cast<cMapObj const *>(value.get());
    return map ? &map->datamap() : nullptr;
}

cRows key_rows(cTypeObj const &type) {
    cRows rows{{"key", "type", "rule", "default"}};
    cAttrHash const *const specs = entries(type, "attspec");
    for (cAttrNode const *node = specs ? specs->first() : nullptr; node; node = specs->next(node))
        if (auto const *const spec = dynamic_cast<cAttspec const *>(node->valref().get()))
            rows.push_back({shown(node->key()), spec->get_type() ? spec->get_type()->name() : "",
                            rule_of(*spec), spec->is_default() ? shown(spec->get_default()) : ""});
    return rows;
}

cRows choice_rows(cTypeObj const &type) {
    cRows rows{{"choice", "value"}};
    cAttrHash const *const choices = entries(type, "choices");
    for (cAttrNode const *node = choices ? choices->first() : nullptr; node;
         node = choices->next(node))
        rows.push_back({shown(node->key()), shown(node->valref())});
    return rows;
}

cRows table_of(cTypeObj const &type) {
    if (&type.type() == &cat::typetype_attlist()) return key_rows(type);
    if (&type.type() == &cat::typetype_choice()) return choice_rows(type);
    return {};
}

// --- as text ---

std::string joined(std::vector<std::string> const &words) {
    std::string line;
    for (std::string const &word : words) line += ' ' + escaped(word);
    return line;
}

std::string text_of(cRows rows) {
    std::vector<size_t> widths(rows.empty() ? 0 : rows[0].size());
    for (auto &row : rows)
        for (size_t i = 0; i < row.size(); ++i) {
            row[i] = escaped(row[i]);
            widths[i] = std::max(widths[i], row[i].size());
        }
    std::string text;
    for (auto const &row : rows) {
        std::string line = "    ";
        for (size_t i = 0; i < row.size(); ++i)
            line += row[i] + std::string(widths[i] + 2 - row[i].size(), ' ');
        text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
    }
    return text;
}

std::string origin(cType const &type, std::string const &file) {
    if (type.place) return escaped(file) + ":" + line_and_column(*type.place);
    return type.module.empty() ? "built in" : "module " + escaped(type.module);
}

std::string text_of(std::vector<cType> const &all, std::string const &file) {
    std::string text;
    for (cType const &type : all) {
        text += escaped(shortened(type.type.name())) + ": " + type.type.type().name() + ", " +
                origin(type, file) + "\n";
        text += "  members:" + joined(members(type.type)) + "\n";
        std::vector<std::string> const from = converters(type, all);
        if (!from.empty()) text += "  converted from:" + joined(from) + "\n";
        text += text_of(table_of(type.type));
    }
    return text;
}

// --- as JSON ---

cJson origin_json(cType const &type, std::string const &file) {
    if (type.place)
        return {{"file", file}, {"line", type.place->line}, {"column", type.place->column}};
    if (!type.module.empty()) return {{"module", type.module}};
    return "built in";
}

cJson rows_json(cRows const &rows) {
    cJson all = cJson::array();
    for (size_t i = 1; i < rows.size(); ++i) {
        cJson row = cJson::object();
        for (size_t k = 0; k < rows[i].size(); ++k)
            row[rows[0][k]] = rows[i][k].empty() ? cJson() : cJson(rows[i][k]);
        all.push_back(row);
    }
    return all;
}

std::string json_of(std::vector<cType> const &all, std::string const &file) {
    cJson list = cJson::array();
    for (cType const &type : all) {
        cJson item{{"name", type.type.name()},
                   {"metatype", type.type.type().name()},
                   {"from", origin_json(type, file)},
                   {"members", members(type.type)},
                   {"converters", converters(type, all)}};
        cRows const rows = table_of(type.type);
        if (!rows.empty()) item[rows[0][0] == "key" ? "keys" : "choices"] = rows_json(rows);
        list.push_back(std::move(item));
    }
    return list.dump(2, ' ', false, cJson::error_handler_t::replace) + "\n";
}

void list_types(cOptions const &options, std::string const &bytes, cReply &reply) {
    cSource source(bytes);
    std::vector<cType> const all = known(source);
    std::string const file = options.file.value_or("");
    reply.text = options.format == "json" ? json_of(all, file) : text_of(all, file);
    reply.status = exit_done;
}

int run(cOptions const &options) {
    if (!options.file) {
        cReply const reply = in_worker("qrv", [&](cReply &r) { list_types(options, "", r); });
        put_messages(reply);
        return print(reply);
    }
    return print(
        with_value(*options.file, options.max_errors, [&](cRead const &file, cReply &reply) {
            list_types(options, file.bytes, reply);
        }));
}

void add_arguments(cArguments &arguments, cOptions &options) {
    arguments.option("FILE", options.file, "also list the types that this file declares");
    arguments.option("--format", options.format, {"text", "json"}, "how to list them");
    add_max_errors(arguments, options.max_errors);
}

cCommand const command(90, "types", "List the known types", help,
                       define<cOptions, add_arguments, run>);

} // namespace
