#pragma once

#include "feeds/HostsFile.h"
#include "feeds/NewsTree.h"
#include "feeds/SiteOperations.h"
#include "platform/AsyncRead.h"
#include "platform/Paths.h"
#include "platform/RegistryStore.h"
#include "settings/modRegistry.h"
#include "toolkit/WxEventPump.h"

#include <functional>
#include <string>

namespace vantro {

// The running parts below the windows, in start order: what is listed first is opened first and closed last.
// Interface thread only. Files that cannot be used keep it from nothing: the store lives in memory then,
// pages and downloads fail, addresses are the built-in ones, and StartNotice() says so.
class Runtime {
public:
    // `wake` as for AsyncRead.
    Runtime(const ProgramFolders& folders, std::function<void()> wake);

    FeedHosts hosts;
    RegistryStore store;
    modRegistry registry;
    NewsTree tree;
    RunFolder folder;
    WxEventPump pump;
    AsyncRead reader; // joins its thread before the rest goes

    // What the user should know about how the start went, in sentences; usually empty.
    [[nodiscard]] std::string StartNotice() const;
};

} // namespace vantro
