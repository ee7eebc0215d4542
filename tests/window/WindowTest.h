#pragma once

#include "platform/RegistryStore.h"
#include "settings/modRegistry.h"
#include "shell/modMain.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <string_view>

class wxTopLevelWindow;

namespace vantro::test {

inline constexpr std::chrono::seconds kPatience{10};

// Handles events until `condition` holds; false when it did not before the deadline.
[[nodiscard]] bool PumpUntil(
    const std::function<bool()>& condition, std::chrono::milliseconds deadline = kPatience);

// Shows a window and waits until the window manager has placed and decorated it. False when it never comes to
// rest.
[[nodiscard]] bool ShowAndSettle(wxTopLevelWindow& window);

// Fails the test when the window is still there after kPatience.
void DestroyAndWait(wxTopLevelWindow& window);

// A store of its own in a temporary folder, with the program's key.
class WindowTest : public ::testing::Test {
protected:
    WindowTest();
    ~WindowTest() override;

    [[nodiscard]] RegValue Stored(std::string_view name)
    {
        return registry.ReadRegValue(RegRoot, RegPath, name);
    }
    void Store(std::string_view name, const RegValue& value)
    {
        registry.WriteRegValue(RegRoot, RegPath, name, value, RegType::Dword);
    }

    std::filesystem::path folder;
    RegistryStore store;
    modRegistry registry;
};

} // namespace vantro::test
