#include "thrown.h"

#include "qrv/diagnostics/cerr.h"

#include <exception>

std::string thrown() {
    try {
        throw;
    } catch (cException const &error) {
        return error.as_string();
    } catch (std::exception const &error) {
        return error.what();
    } catch (...) {
        return "an unknown exception";
    }
}
