// Calls a function with one argument by its name. The function is a member of the object or of its
// type; in Lua, which is called by its C interface, a field of a table or of its metatable.
#include "bench/row.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"

#include <lua.hpp>

#include <memory>

namespace {

constexpr char const *name = "poke";

constinit int poked = 0;

bool poke(cObj &, objref &) {
    ++poked;
    return true;
}

int lua_poke(lua_State *) {
    ++poked;
    return 0;
}

cRounds rounds_of(int n, std::function<void(int)> const &calls) {
    return [n, calls](cRound &round) {
        poked = 0;
        round.measure([&] { calls(n); });
        round.answer = [] { return std::to_string(poked); };
    };
}

cRounds call_qrv(int n, objref const &object) {
    return rounds_of(n, [object, argument = cat::of(1)](int calls) {
        for (int i = 0; i < calls; ++i) object->call(name, argument);
    });
}

cRounds own_qrv(int n) {
    cRef<cMapObj> const object = make<cMapObj>();
    object->set_omember(name, make<cExeMember>(poke));
    return call_qrv(n, object);
}

cRounds type_qrv(int n) {
    // Types are not freed.
    auto *const type = new cTypeObj(
        "poked", +[](cTypeObj &t) {
            t.inherit(cat::type_map());
            t.set_tmember(name, make<cExeMember>(poke));
        });
    return call_qrv(n, objref::adopt(new cMapObj(type, true)));
}

// The object is at the bottom of the stack.
cRounds call_lua(int n, std::shared_ptr<lua_State> const &lua) {
    return rounds_of(n, [lua](int calls) {
        for (int i = 0; i < calls; ++i) {
            lua_getfield(lua.get(), 1, name);
            lua_pushvalue(lua.get(), 1);
            lua_pushinteger(lua.get(), 1);
            lua_call(lua.get(), 2, 0);
        }
    });
}

std::shared_ptr<lua_State> lua_with_object() {
    std::shared_ptr<lua_State> const lua(luaL_newstate(), lua_close);
    lua_newtable(lua.get());
    return lua;
}

cRounds own_lua(int n) {
    auto const lua = lua_with_object();
    lua_pushcfunction(lua.get(), lua_poke);
    lua_setfield(lua.get(), 1, name);
    return call_lua(n, lua);
}

cRounds type_lua(int n) {
    auto const lua = lua_with_object();
    lua_newtable(lua.get()); // the metatable
    lua_newtable(lua.get()); // the table of its methods
    lua_pushcfunction(lua.get(), lua_poke);
    lua_setfield(lua.get(), -2, name);
    lua_setfield(lua.get(), -2, "__index");
    lua_setmetatable(lua.get(), 1);
    return call_lua(n, lua);
}

cSide side(char const *library, cRounds (*rounds)(int)) {
    return {library, [rounds](std::string const &size) {
                int const n = std::stoi(size);
                return cPrepared{static_cast<std::size_t>(n), size, rounds(n)};
            }};
}

} // namespace

std::vector<cWork> call_works() {
    std::vector<std::string> const sizes = {"1000", "10000", "100000"};
    return {
        {"call_own", sizes, {"10000"}, {side("qrv", own_qrv), side("Lua", own_lua)}},
        {"call_type", sizes, {"10000"}, {side("qrv", type_qrv), side("Lua", type_lua)}},
    };
}
