#include "settings/modRegistry.h"

#include <gtest/gtest.h>

#include <limits>

namespace vantro {
namespace {

constexpr RootKey kRoot = RootKey::LocalMachine;
constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();

class ModRegistryTest : public testing::Test {
protected:
    void SetUp() override { registry_.CreateRegKey(kRoot, kProduct); }

    RegValue Read(std::string_view name) { return registry_.ReadRegValue(kRoot, kProduct, name); }
    RegValue WriteAndRead(const RegValue& value, RegType type)
    {
        registry_.WriteRegValue(kRoot, kProduct, "Value", value, type);
        return Read("Value");
    }

    static constexpr const char* kProduct = "Software\\Vantro";
    // A store below a file that is no folder lives in memory.
    RegistryStore store_{"/dev/null/registry.db"};
    modRegistry registry_{store_};
};

TEST(RegValue, ReadsAsTheNumberAndTheTextItStandsFor)
{
    const struct {
        RegValue value;
        std::int32_t number;
        const char* text;
    } kCases[] = {
        {{}, 0, ""},
        {-7, -7, "-7"},
        {kLeast, kLeast, "-2147483648"},
        {"", 0, ""},
        {"60", 60, "60"},
        {" \t+15 minutes", 15, " \t+15 minutes"},
        {"-3.9", -3, "-3.9"},
        {"+-3", 0, "+-3"},
        {"99999999999999999999", kMost, "99999999999999999999"},
    };
    for (const auto& row : kCases) {
        EXPECT_TRUE(row.value == row.number) << row.text;
        EXPECT_TRUE(row.value == row.text) << row.text;
    }
    EXPECT_TRUE(RegValue().IsEmpty());
    EXPECT_FALSE(RegValue("7").IsNumber());
}

TEST_F(ModRegistryTest, AValueReadsBackInTheTypeItWasWrittenWith)
{
    const RegValue text = WriteAndRead("K\xc3\xb6ln <b>&\"", RegType::Sz);
    EXPECT_TRUE(text == "K\xc3\xb6ln <b>&\"");
    EXPECT_FALSE(text.IsNumber());
    for (const std::int32_t number : {0, 1, -1, kMost, kLeast}) {
        EXPECT_TRUE(WriteAndRead(number, RegType::Dword).IsNumber());
        EXPECT_TRUE(Read("vALUE") == number);
    }
    EXPECT_TRUE(WriteAndRead(-12, RegType::Sz) == "-12");
    EXPECT_FALSE(Read("Value").IsNumber());
    EXPECT_TRUE(WriteAndRead("42nd", RegType::Dword).IsNumber());
    EXPECT_TRUE(Read("Value") == 42);
    EXPECT_TRUE(WriteAndRead(RegValue(), RegType::Dword).IsNumber());
    EXPECT_TRUE(WriteAndRead("", RegType::Sz).IsEmpty());
}

TEST_F(ModRegistryTest, WhatIsNotThereReadsAsEmptyAndAWriteToNowhereIsLost)
{
    EXPECT_TRUE(Read("never written").IsEmpty());
    registry_.WriteRegValue(kRoot, "Software\\Vantro\\XBINS\\1", "Tag", "<READ>", RegType::Sz);
    EXPECT_TRUE(registry_.ReadRegValue(kRoot, "Software\\Vantro\\XBINS\\1", "Tag").IsEmpty());
    EXPECT_EQ(store_.OpenKey("HKEY_LOCAL_MACHINE\\Software\\Vantro\\XBINS"), 0);

    const auto other_root = static_cast<RootKey>(0x80000001);
    registry_.CreateRegKey(other_root, "Software\\Other");
    EXPECT_EQ(store_.OpenKey("HKEY_LOCAL_MACHINE\\Software\\Other") + store_.OpenKey("Software\\Other"), 0);
    EXPECT_TRUE(registry_.ReadRegValue(other_root, kProduct, "Value").IsEmpty());
}

TEST_F(ModRegistryTest, ASiteIsDeletedFromTheBottomOnly)
{
    const char* const site = "Software\\Vantro\\XBINS";
    registry_.CreateRegKey(kRoot, "Software\\Vantro\\XBINS\\12\\");
    registry_.WriteRegValue(kRoot, site, "TotalItems", 1, RegType::Dword);
    registry_.DeleteRegKey(kRoot, site);
    EXPECT_TRUE(registry_.ReadRegValue(kRoot, site, "TotalItems") == 1);
    EXPECT_NE(store_.OpenKey("HKEY_LOCAL_MACHINE\\Software\\Vantro\\XBINS\\12"), 0);

    registry_.DeleteRegKey(kRoot, "Software\\Vantro\\XBINS\\12");
    registry_.DeleteRegKey(kRoot, site);
    EXPECT_EQ(store_.OpenKey("HKEY_LOCAL_MACHINE\\Software\\Vantro\\XBINS"), 0);
}

TEST_F(ModRegistryTest, TheInnerHalvesTellHowItWent)
{
    const auto key = store_.OpenKey("HKEY_LOCAL_MACHINE\\Software\\Vantro");
    const std::int64_t big = std::int64_t{1} << 40;
    EXPECT_TRUE(store_.SetValue(key, "too big", RegType::Dword, big));
    EXPECT_TRUE(store_.SetValue(key, "too small", RegType::Dword, -big));
    EXPECT_TRUE(store_.SetValue(key, "binary", static_cast<RegType>(3), "bytes"));
    EXPECT_TRUE(store_.SetValue(key, "text that is none", RegType::Sz, std::int64_t{1}));
    EXPECT_TRUE(store_.SetValue(key, "number that is none", RegType::Dword, "1"));
    EXPECT_TRUE(store_.SetValue(key, "empty", RegType::Sz, std::string_view()));
    const struct {
        const char* name;
        int status;
        std::int32_t number = 0;
    } kCases[] = {{"too big", 0, kMost}, {"too small", 0, kLeast}, {"binary", -1}, {"text that is none", -1},
        {"number that is none", -1}, {"empty", 0}, {"missing", 2}};
    for (const auto& row : kCases) {
        RegValue value = "left from before";
        EXPECT_EQ(registry_.QueryValueData(key, row.name, value), row.status) << row.name;
        EXPECT_TRUE(value == row.number) << row.name;
        EXPECT_EQ(value.IsEmpty(), row.number == 0) << row.name;
    }
    EXPECT_EQ(registry_.SetValueData(key, "Value", RegType::Sz, "x"), 0);
    EXPECT_EQ(registry_.SetValueData(0, "Value", RegType::Sz, "x"), 5);
    EXPECT_EQ(registry_.SetValueData(key, "Value", static_cast<RegType>(3), "y"), 0);
    EXPECT_TRUE(Read("Value") == "x");
}

} // namespace
} // namespace vantro
