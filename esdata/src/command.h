// Reading of the command documents that provider_RunCommand accepts.
#ifndef ESDATA_COMMAND_H
#define ESDATA_COMMAND_H

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace esdata {

struct SpecRecord
{
    std::u16string libName;
    int32_t style = 0, firstPart = 0, secondPart = 0;
    std::vector<std::pair<int32_t, std::u16string>> columns;
};

// One "create_spec" command: the element it names and its new specification records.
struct CreateSpec
{
    std::u16string packet, id;
    std::vector<SpecRecord> specs;
};

// Parses a command document; false (with a reason) when it is malformed or holds a command
// of another type.
bool parseCommands(std::u16string_view xml, std::vector<CreateSpec>& out, std::string& error);

} // namespace esdata

#endif
