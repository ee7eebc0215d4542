#include "platform/RegistryStore.h"
#include "settings/modRegistry.h"

#include <gtest/gtest.h>
#include <limits>

namespace vantro {

constexpr RootKey kRoot = RootKey::LocalMachine;
constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();

struct ModRegistryTest : testing::Test {
    ModRegistryTest() { registry_.CreateRegKey(kRoot, "Software\\Vantro"); }

    RegValue WriteAndRead(const RegValue& value, RegType type, const char* key = "Software\\Vantro")
    {
        registry_.WriteRegValue(kRoot, key, "Value", value, type);
        return registry_.ReadRegValue(kRoot, key, "vALUE");
    }

    // A store below a file that is no folder lives in memory.
    RegistryStore store_{"/dev/null/registry.db"};
    modRegistry registry_{store_};
};

TEST_F(ModRegistryTest, AValueReadsBackInTheTypeItWasWrittenWithAndAsTheOtherItStandsFor)
{
    const std::tuple<RegValue, std::int32_t, const char*> cases[] = {{{}, 0, ""}, {-7, -7, "-7"},
        {kLeast, kLeast, "-2147483648"}, {" \t+15 minutes", 15, " \t+15 minutes"}, {"-3.9", -3, "-3.9"},
        {"+-3", 0, "+-3"}, {"99999999999999999999", kMost, "99999999999999999999"},
        {"K\xc3\xb6ln <b>&\"", 0, "K\xc3\xb6ln <b>&\""}};
    for (const auto& [value, number, text] : cases) {
        const RegValue read = WriteAndRead(value, RegType::Sz);
        EXPECT_TRUE(read == text && read == number && !read.IsNumber()) << text;
        EXPECT_EQ(read.IsEmpty(), value.IsEmpty());
        const RegValue asNumber = WriteAndRead(value, RegType::Dword);
        EXPECT_TRUE(asNumber == number && asNumber.IsNumber()) << text;
    }
    EXPECT_TRUE(WriteAndRead("left", RegType::Sz, "Software\\No such key").IsEmpty());
    EXPECT_EQ(store_.OpenKey("HKEY_LOCAL_MACHINE\\Software\\No such key"), 0);
}

TEST_F(ModRegistryTest, WhatIsNeitherTextNorNumberReadsAsEmpty)
{
    const auto key = store_.OpenKey("HKEY_LOCAL_MACHINE\\Software\\Vantro");
    const std::int64_t big = std::int64_t{1} << 40;
    const std::tuple<const char*, int, std::variant<std::int64_t, std::string_view>, int, int> cases[]
        = {{"too big", 4, big, 0, kMost}, {"too small", 4, -big, 0, kLeast}, {"binary", 3, "bytes", -1, 0},
            {"text that is none", 1, 1, -1, 0}, {"empty", 1, "", 0, 0}};
    for (const auto& [name, type, data, status, number] : cases) {
        EXPECT_TRUE(store_.SetValue(key, name, static_cast<RegType>(type), data));
        RegValue value = "left from before";
        EXPECT_EQ(registry_.QueryValueData(key, name, value), status) << name;
        EXPECT_TRUE(value == number && value.IsEmpty() == (number == 0)) << name;
    }
    RegValue none;
    EXPECT_EQ(registry_.QueryValueData(key, "missing", none), 2);
}

} // namespace vantro
