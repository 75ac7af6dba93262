#include "qrv/text/file/creadtext.h"

#include "base/platform/cloader.h"
#include "diagnostics/cerr_codes.h"
#include "qrv/base/platform/cplatform.h"
#include "qrv/text/read/cattrscan.h"
#include "text/file/cfile_scan.h"
#include "text/read/cscan_text.h"
#include "text/scan/cmemory_stream.h"

namespace {

// Collects the errors of one reading. hand_over() adds them to the given report.
class cOwnReport {
  public:
    explicit cOwnReport(cat::ReadReport &report)
        : report_(report), first_(report.entries().size()),
          own_(report.limit() > first_ ? report.limit() - first_ : 0) {
        own_.watch(report.watch());
    }
    cOwnReport(cOwnReport const &) = delete;
    cOwnReport &operator=(cOwnReport const &) = delete;
    ~cOwnReport() = default;

    bool empty() const { return own_.empty(); }
    void hand_over() {
        for (cat::ReadError error : own_.entries()) {
            if (error.follows != cat::ReadError::none) error.follows += first_;
            report_.keep(std::move(error));
        }
        for (std::size_t i = 0; i < own_.dropped(); ++i) report_.keep({}); // is only counted
    }

  private:
    cat::ReadReport &report_;
    std::size_t const first_;
    cat::ReadReport own_;
};

class cModuleFilter {
  public:
    explicit cModuleFilter(cat::module_filter filter) : before_(cat::the_module_filter()) {
        if (filter) qrv_set_module_filter(filter);
    }
    cModuleFilter(cModuleFilter const &) = delete;
    cModuleFilter &operator=(cModuleFilter const &) = delete;
    ~cModuleFilter() { qrv_set_module_filter(before_); }

  private:
    cat::module_filter const before_;
};

bool read(cAttrScan &scan, objref &result, cat::ReadReport &report,
          cat::ReadOptions const &options) {
    cOwnReport own(report);
    objref value;
    {
        cSetTmp<int> depth;
        if (options.max_depth > 0) depth.take(cat::max_read_depth);
        if (options.max_depth > 0) cat::max_read_depth = options.max_depth;
        cModuleFilter const filter(options.module_filter);
        scan.return_com(options.comments);
        cat::scan_text(scan, value); // RUNS USER CODE
    }
    own.hand_over();
    result = value; // RUNS USER CODE
    return own.empty();
}

} // namespace

bool cat::read_text(std::string_view text, objref &result, ReadReport &report,
                    ReadOptions const &options) {
    cMemoryStream stream(without_mark(text));
    cAttrScan scan(stream, false);
    if (!options.name.empty()) scan.set_filename(options.name.c_str());
    return read(scan, result, report, options);
}

bool cat::read_file(std::string const &path, objref &result, ReadReport &report,
                    ReadOptions const &options) {
    cFileScan file(path.c_str());
    if (file.opened()) return read(file.scan(), result, report, options);
    ReadError error;
    error.file = path;
    error.code = err_file_not_opened.code;
    error.kind = err_file_not_opened.kind;
    error.text = err_file_not_opened.text + path;
    error.names.name = path;
    report.add(std::move(error));
    result = nullptr;
    return false;
}

std::string cat::format(ReadError const &error) {
    std::string line = error.file;
    if (error.line != 0) {
        if (!line.empty()) line += ':';
        line += std::to_string(error.line) + ':' + std::to_string(error.column);
    }
    if (!line.empty()) line += ": ";
    return line + "error: " + error.text;
}
