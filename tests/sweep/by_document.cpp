#include "tests/sweep/by_document.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/value/document.h"
#include "tests/support/memory_file.h"

#include <stdexcept>

namespace sweep_test {
namespace {

using qrv::document, qrv::value;

// A path without its last key, and that key.
std::pair<std::string, std::string> split(std::string const &path) {
    std::size_t slash = path.npos;
    bool quoted = false;
    for (std::size_t i = 0; i < path.size(); ++i) {
        if (path[i] == '\\')
            ++i;
        else if (path[i] == '"')
            quoted = !quoted;
        else if (path[i] == '/' && !quoted)
            slash = i;
    }
    if (slash == path.npos) return {"", path};
    return {path.substr(0, slash), path.substr(slash + 1)};
}

// "path = value" assigns to the object there, "path &= value" stores another one.
void set(document &doc, std::string const &statement) {
    for (char const *const symbol : {" = ", " &= ", " << "}) {
        std::size_t const at = statement.find(symbol);
        if (at == statement.npos) continue;
        std::string const path = statement.substr(0, at);
        value const given = doc.read(statement.substr(at + std::string(symbol).size()));
        if (symbol[1] == '<')
            doc.at(path).push_back(given);
        else if (symbol[1] == '=' && doc.find(path))
            doc.at(path).assign(given);
        else
            doc.set(path, given);
        return;
    }
    throw std::runtime_error("unknown statement");
}

void insert(document &doc, std::vector<std::string> const &command) {
    auto const [parent, last] = split(command[2]);
    bool const after = command[3] == "after";
    value const given = doc.read(command.back());
    value container = doc.at(parent);
    auto &hash = static_cast<cMapObj &>(*container.object()).datamap();
    if (container.is_vector()) {
        container.insert(std::stoul(last) + (after ? 1 : 0), given);
    } else if (container.is_set()) {
        hash.vect_insert(std::stoi(last) + (after ? 1 : 0), given.object());
    } else { // qrv::value cannot insert a key at a position
        container[command[4]] = given;
        cAttrNode *const node = hash.find(doc.read(last).object());
        hash.insert(value(command[4]).object(), given.object(), after ? hash.next(node) : node);
    }
}

} // namespace

cRun run_by_document(std::vector<std::string> const &command, std::string const &bytes) {
    test::cMemory const file(bytes);
    document doc = document::load(file.name());
    std::string refusal; // of the tool
    try {
        if (command[0] == "set") set(doc, command[2]);
        if (command[0] == "ins") insert(doc, command);
        if (command[0] == "del") {
            // qrv::value resets an attribute of a declared type to its default; the tool refuses.
            if (doc.at(split(command[2]).first).is_object()) return {2, "", "needs this key"};
            if (doc.at(command[2]).object()->is_type()) refusal = "this type is still used: ";
            doc.erase(command[2]);
        }
        doc.save();
        return {0, file.bytes(), ""};
    } catch (qrv::error const &error) {
        return {2, "", refusal + error.what()};
    }
}

} // namespace sweep_test
