// The streams, rules and channels of tracing; and the timer.
//
// Streams and channels link themselves into lists, which need no memory and no constructor. So
// static streams and channels in any file may be constructed before, and destroyed after, all
// objects of the library. The rules are created on first need; start/startup.cpp removes them at
// the end of the process.

#include "qrv/diagnostics/ctrace.h"

#include "qrv/base/platform/cplatform.h"
#include "qrv/diagnostics/ccout.h"

#include <algorithm>
#include <fstream>
#include <locale>
#include <string_view>

namespace {

constexpr std::string_view blanks = " \t";
constexpr std::string_view signs = "+-";
constexpr auto npos = std::string_view::npos;

class cTraceRule : public cShared {
  public:
    explicit cTraceRule(std::string_view rule_name) : name(rule_name) {}
    cTraceRule(cTraceRule const &) = delete;
    cTraceRule &operator=(cTraceRule const &) = delete;
    ~cTraceRule() = default;

    std::string name;
    bool enabled = false;
    cTracer::streams streams;
};

using cTraceRules = std::vector<cRef<cTraceRule>>;

constinit cTraceRules *rules = nullptr;

// A list of all objects of a class, in order of creation. Each object has two members that point to
// its neighbours.
template <class T> struct cList {
    void enter(T &one, T *T::*prev, T *T::*next) {
        one.*prev = last;
        (last ? last->*next : first) = &one;
        last = &one;
    }
    void leave(T const &one, T *T::*prev, T *T::*next) {
        (one.*prev ? (one.*prev)->*next : first) = one.*next;
        (one.*next ? (one.*next)->*prev : last) = one.*prev;
    }

    T *first = nullptr, *last = nullptr;
};

constinit cList<cTraceStream> all_streams;
constinit cList<cTracer> all_tracers;

std::shared_ptr<std::ostream> stream_beside(std::ostream const &other) {
    auto os = std::make_shared<std::ostream>(other.rdbuf());
    os->imbue(std::locale::classic());
    return os;
}

std::shared_ptr<std::ostream> open_target(std::string const &name) {
    if (name == "cerr") return stream_beside(cat::std_err());
    if (name == "cout") return stream_beside(cat::std_out());
    auto file = std::make_shared<std::ofstream>();
    file->imbue(std::locale::classic());
    file->open(name, std::ios::app);
    if (file->is_open()) return file;
    auto os = stream_beside(cat::std_err());
    *os << "cTraceStream: open failed: " << name << std::endl; // RE-ENTERS
    return os;
}

// An empty name means "cerr". A name is empty if the token has no colon, or has nothing after it or
// between two commas.
std::string stream_name(std::string_view name) { return std::string(name.empty() ? "cerr" : name); }

// The rule of that name. If it does not exist, adds it at the end of the list.
cRef<cTraceRule> rule_of(std::string_view name) {
    if (!rules) rules = new cTraceRules;
    auto const found =
        std::ranges::find_if(*rules, [name](auto const &r) { return r->name == name; });
    if (found != rules->end()) return *found;
    return rules->emplace_back(make<cTraceRule>(name));
}

void set_rule(std::string_view name, bool enabled, std::string_view stream_list) {
    cRef<cTraceRule> const rule = rule_of(name);
    rule->streams.clear();
    rule->enabled = enabled;
    while (enabled) {
        auto const comma = stream_list.find(',');
        rule->streams.push_back(cTraceStream::open(stream_name(stream_list.substr(0, comma))));
        if (comma == npos) return;
        stream_list.remove_prefix(comma + 1);
    }
}

// "a+b-c:x.log" sets three rules with the same streams.
void set_rules(std::string_view token) {
    auto const colon = token.find(':');
    std::string_view names = token.substr(0, colon);
    std::string_view stream_list = colon == npos ? "" : token.substr(colon + 1);
    while (!names.empty()) {
        bool const enabled = names.front() != '-';
        if (signs.find(names.front()) != npos) names.remove_prefix(1);
        std::string_view const name = names.substr(0, names.find_first_of(signs));
        names.remove_prefix(name.size());
        if (!name.empty()) set_rule(name, enabled, stream_list);
    }
}

// The rule with the longest name with which `ident` begins; null if no rule matches.
cTraceRule const *rule_for(std::string const &ident) {
    cTraceRule const *best = nullptr;
    if (!rules) return best;
    for (auto const &rule : *rules) {
        if (!ident.starts_with(rule->name)) continue;
        if (!best || rule->name.size() >= best->name.size()) best = rule.get();
    }
    return best;
}

} // namespace

cTraceStream::cTraceStream(std::string const &name)
    : name_(stream_name(name)), os_(open_target(name_)) {
    enter_list();
}

cTraceStream::cTraceStream(cTraceStream const &other)
    : cShared(other), name_(other.name_), os_(other.os_) {
    enter_list();
}

cTraceStream &cTraceStream::operator=(cTraceStream const &other) {
    name_ = other.name_;
    os_ = other.os_;
    return *this;
}

cTraceStream::~cTraceStream() {
    all_streams.leave(*this, &cTraceStream::prev_, &cTraceStream::next_);
}

void cTraceStream::enter_list() {
    all_streams.enter(*this, &cTraceStream::prev_, &cTraceStream::next_);
}

cRef<cTraceStream> cTraceStream::open(std::string const &name) {
    std::string const wanted = stream_name(name);
    for (cTraceStream *stream = all_streams.first; stream; stream = stream->next_)
        if (stream->name_ == wanted) return cRef<cTraceStream>::share(stream);
    return make<cTraceStream>(wanted);
}

void cTraceStream::detach(std::streambuf const *buffer) {
    for (cTraceStream *stream = all_streams.first; stream; stream = stream->next_)
        if (stream->os_->rdbuf() == buffer) stream->os_->rdbuf(nullptr);
}

void cSetTracing(std::string const &spec) {
    std::string const text = spec; // a copy, since user code may change the caller's string
    std::string_view rest = text;
    auto begin = rest.find_first_not_of(blanks);
    if (begin == npos || signs.find(rest[begin]) == npos) cat::clear_trace_rules();
    for (; begin != npos; begin = rest.find_first_not_of(blanks)) {
        rest.remove_prefix(begin);
        std::string_view const token = rest.substr(0, rest.find_first_of(blanks));
        rest.remove_prefix(token.size());
        set_rules(token); // RE-ENTERS if a file cannot be opened
    }
    for (cTracer *tracer = all_tracers.first; tracer; tracer = tracer->next_) tracer->apply_rules();
}

void cat::clear_trace_rules() { delete std::exchange(rules, nullptr); }

cTracer::cTracer(std::string const &ident, int flags) : ident_(ident), flags_(flags) {
    apply_rules();
    enter_list();
}

cTracer::cTracer(cTracer const &other)
    : strlist_(other.strlist_), ident_(other.ident_), enabled_(other.enabled_),
      indent_(other.indent_), flags_(other.flags_) {
    enter_list();
}

cTracer &cTracer::operator=(cTracer const &other) {
    strlist_ = other.strlist_;
    ident_ = other.ident_;
    enabled_ = other.enabled_;
    indent_ = other.indent_;
    flags_ = other.flags_;
    return *this;
}

cTracer::~cTracer() { all_tracers.leave(*this, &cTracer::prev_, &cTracer::next_); }

void cTracer::enter_list() { all_tracers.enter(*this, &cTracer::prev_, &cTracer::next_); }

void cTracer::apply_rules() {
    cTraceRule const *const rule = rule_for(ident_);
    strlist_ = rule && rule->enabled ? rule->streams : streams();
    initenabled();
}

constinit double cStopWatch::freq = 0.0;

void cStopWatch::queryfreq() { freq = 1.0 / static_cast<double>(cat::counter_frequency()); }

cStopWatch::cStopWatch() : start_(cat::counter()), last_(start_) {}

void cStopWatch::Start() { start_ = last_ = cat::counter(); }

double cStopWatch::operator()() const {
    std::int64_t const now = cat::counter();
    double const lap = seconds_to(now);
    last_ = now;
    return lap;
}

double cStopWatch::Elapsed() const { return seconds_to(cat::counter()); }

std::int64_t cStopWatch::clock() const { return cat::counter(); }

double cStopWatch::seconds_to(std::int64_t now) const {
    if (freq == 0.0) queryfreq();
    return static_cast<double>(now - last_) * freq;
}

namespace {

// Restores a stream's number format in its destructor.
class cKeepFormat {
  public:
    explicit cKeepFormat(std::ostream &os)
        : os_(os), precision_(os.precision()), flags_(os.flags()) {}
    cKeepFormat(cKeepFormat const &) = delete;
    cKeepFormat &operator=(cKeepFormat const &) = delete;
    ~cKeepFormat() {
        os_.precision(precision_);
        os_.flags(flags_);
    }

  private:
    std::ostream &os_;
    std::streamsize precision_;
    std::ios::fmtflags flags_;
};

} // namespace

std::ostream &operator<<(std::ostream &os, cStopWatch const &watch) {
    cKeepFormat const keep(os);
    os.precision(6);
    os.flags(std::ios::fixed);
    return os << watch() << " s";
}
