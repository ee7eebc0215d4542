#include "feeds/MergePlan.h"

#include "base/modMain.h"
#include "feeds/ItemTag.h"

#include <cstddef>
#include <map>
#include <utility>

namespace vantro {

MergePlan PlanMerge(std::span<const KeptItem> kept, std::span<const std::string_view> incomingTitles)
{
    MergePlan plan;
    plan.states.assign(
        incomingTitles.size(), {TreeImage::New, true, std::string(UnreadMarker) + std::string(NewMarker)});

    // Ordered, as titles come from outside: they can be made to collide in any hash that is known.
    std::map<std::string_view, std::size_t> firstOfTitle;
    for (std::size_t i = 0; i < incomingTitles.size(); ++i)
        firstOfTitle.try_emplace(incomingTitles[i], i);

    for (const KeptItem& item : kept) {
        if (const auto found = firstOfTitle.find(item.title); found != firstOfTitle.end())
            plan.states[found->second] = item.state;
    }

    for (ItemState& state : plan.states) {
        if (state.tag.find(NewMarker) == std::string::npos)
            continue;
        state.tag = ReplaceAll(std::move(state.tag), NewMarker, {});
        ++plan.newItems;
    }
    return plan;
}

} // namespace vantro
