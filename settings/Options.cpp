#include "settings/Options.h"

#include "settings/modRegistry.h"

namespace vantro {

RegValue ReadOption(modRegistry& registry, const Option& option)
{
    return registry.ReadRegValue(RegRoot, RegPath, option.name);
}

bool IsOn(modRegistry& registry, const Option& option)
{
    return ReadOption(registry, option) == 1;
}

void StoreOption(modRegistry& registry, const Option& option, std::int32_t number)
{
    registry.WriteRegValue(RegRoot, RegPath, option.name, number, RegType::Dword);
}

} // namespace vantro
