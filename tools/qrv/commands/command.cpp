#include "tools/qrv/commands/command.h"

#include <algorithm>

namespace {
constinit cCommand const *last_registered = nullptr;
}

cCommand::cCommand(int rank, char const *name, char const *summary, char const *help,
                   cDefine define) noexcept
    : rank_(rank), name_(name), summary_(summary), help_(help), define_(define),
      next_(last_registered) {
    last_registered = this;
}

std::vector<cCommand const *> cCommand::all() {
    std::vector<cCommand const *> commands;
    for (cCommand const *command = last_registered; command; command = command->next_)
        commands.push_back(command);
    std::sort(commands.begin(), commands.end(),
              [](cCommand const *a, cCommand const *b) { return a->rank_ < b->rank_; });
    return commands;
}
