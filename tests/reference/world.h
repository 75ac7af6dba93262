#pragma once
// The state that the work of one seed shares. run_seed() restores the state of the process.

#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobj.h"
#include "qrv/core/ctypeobj.h"
#include "tests/reference/random.h"

#include <cstdint>
#include <string>
#include <vector>

namespace reference {

class cBag;

struct cWorld {
    explicit cWorld(std::uint64_t seed) : input(seed), user(~seed) {}

    cRandom input; // determines the work in advance
    cRandom user;  // determines the actions of user code when it is called
    unsigned serial = 0;
    unsigned acts = 0;            // the actions of user code so far, which are limited
    bool calm = false;            // user code only logs
    int writing_keys = 0;         // no container may be changed at all
    int writing = 0;              // values are being written: containers must stay as they are
    std::vector<cBag *> bags;     // living containers of user classes
    std::vector<objref> written;  // values that user code may write once more
    cAttrHash *watched = nullptr; // destructors read it
};

cWorld &world();

// Exists while values are written.
class cWriting {
  public:
    cWriting() { ++world().writing; }
    cWriting(cWriting const &) = delete;
    cWriting &operator=(cWriting const &) = delete;
    ~cWriting() { --world().writing; }
};

// Runs one seed and restores the state of the process.
void run_seed(std::string const &mode, std::uint64_t seed);

void read_mode();
void write_mode();
void copy_mode();
void hash_mode();
void scan_mode();

} // namespace reference
