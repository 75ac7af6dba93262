#include "tools/qrv/output/thrown.h"

#include <exception>

std::string thrown() {
    try {
        throw;
    } catch (std::exception const &error) {
        return error.what();
    } catch (...) {
        return "an unknown exception";
    }
}
