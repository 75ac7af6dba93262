#include "tools/qrv/output/thrown.h"

#include "tools/qrv/output/no_memory.h"

#include <exception>
#include <new>

std::string thrown() {
    try {
        throw;
    } catch (std::bad_alloc const &) { // thrown only for impossible sizes
        return out_of_memory;
    } catch (std::exception const &error) {
        return error.what();
    } catch (...) {
        return "an unknown exception";
    }
}
