#include "system/hardware.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

struct Device {
  uint8_t length;  // of the formatted area; it implies the table's version
  uint16_t size = 0;
  uint8_t type = 2;
  uint16_t speed_mhz = 0;
  uint16_t configured_mhz = 0;
  std::string strings = std::string("\0", 1);  // each with its zero; one more zero follows
};

std::string Structure(uint8_t type, std::string formatted,
                      const std::string& strings = std::string("\0", 1)) {
  formatted[0] = static_cast<char>(type);
  formatted[1] = static_cast<char>(formatted.size());
  return formatted + strings + '\0';
}

// Returns a complete type 17 structure. Fields beyond its length are left out; all others are zero.
std::string MemoryDevice(const Device& device) {
  std::string formatted(0x64, '\0');
  auto put_word = [&](size_t offset, uint16_t value) {
    formatted[offset] = static_cast<char>(value & 0xFF);
    formatted[offset + 1] = static_cast<char>(value >> 8);
  };
  put_word(0x0C, device.size);
  formatted[0x12] = static_cast<char>(device.type);
  put_word(0x15, device.speed_mhz);
  put_word(0x20, device.configured_mhz);
  formatted.resize(device.length);
  return Structure(17, formatted, device.strings);
}

std::string Table(const std::vector<std::string>& structures) {
  std::string table = {0, 3, 3, 0, 0, 0, 0, 0};
  for (const std::string& structure : structures) table += structure;
  return table;
}

const std::string kStrings("DIMM A1\0BANK 0\0", 15);
const std::string kBios = Structure(0, std::string(0x1A, '\0'), std::string("Peat Firmware\0", 14));
const std::string kEnd = Structure(127, std::string(4, '\0'));

std::wstring MemoryLine(int32_t total_gb, const std::vector<Device>& devices) {
  std::vector<std::string> structures = {kBios};
  for (const Device& device : devices) structures.push_back(MemoryDevice(device));
  structures.push_back(kEnd);
  return FormatMemory(total_gb, ParseMemoryModules(Table(structures)));
}

}  // namespace

TEST(MemoryLine, DescribesModulesOfEveryTableVersion) {
  const uint16_t mb_8192 = 8192, mb_16384 = 16384;
  struct {
    const char* name;
    int32_t total_gb;
    std::vector<Device> devices;
    std::wstring want;
  } cases[] = {
      {"no size known", 0, {{0x28, mb_8192, 0x1A, 3200}}, L"16 GB DDR4"},
      {"no table", 8, {}, L"8 GB"},
      {"2.1, no speed field, uneven", 7, {{0x15, 4096, 0x18, 1600}, {0x15, 2048}}, L"7 GB DDR3 (2x 3 GB)"},
      {"shortest with a configured speed", 8, {{0x24, mb_8192, 0x1A, 0, 2933}}, L"8 GB DDR4 @ 2933 MHz"},
      {"3.3, two modules, two empty slots",
       32,
       {{0x5C, mb_16384, 0x1A, 3200}, {0x5C, 0, 0x22, 4800}, {0x5C, mb_16384, 0x1A, 3200}, {0x5C, 0, 2, 0}},
       L"32 GB DDR4 @ 3200 MHz (2x 16 GB)"},
      {"configured speed only until one is known",
       16,
       {{0x28, mb_8192, 0x1A, 0, 2400}, {0x28, mb_8192, 0x1A, 0, 2933}},
       L"16 GB DDR4 @ 2400 MHz (2x 8 GB)"},
      {"a later rated speed wins",
       16,
       {{0x28, mb_8192, 0x1A, 0, 2400}, {0x28, mb_8192, 0x1A, 3200, 2933}},
       L"16 GB DDR4 @ 3200 MHz (2x 8 GB)"},
      {"speed 0xFFFF is none", 16, {{0x5C, mb_16384, 0x22, 0xFFFF, 0xFFFF}}, L"16 GB DDR5"},
      {"unknown type with a speed", 32, {{0x28, mb_16384, 0x1B, 2666}}, L"32 GB DDR @ 2666 MHz"},
      {"formatted area too short to tell a type", 8, {{0x13, mb_8192, 0x1A}}, L"8 GB"},
  };
  for (const auto& c : cases) EXPECT_EQ(MemoryLine(c.total_gb, c.devices), c.want) << c.name;
}

TEST(ParseMemoryModules, ReadsDamagedTablesAsFarAsPossible) {
  const std::string module = MemoryDevice({0x28, 8192, 0x1A, 3200, 0, kStrings});
  std::string long_lie = module;
  long_lie[1] = '\xFF';
  std::string short_lie = module;
  short_lie[1] = 3;
  const auto count = [](std::string_view table) { return ParseMemoryModules(table).count; };
  const std::string two = Table({module, module});
  EXPECT_EQ(count(two.substr(0, 8 + module.size() + 0x28 + 3)), 2) << "cut in the strings";
  EXPECT_EQ(count(two.substr(0, 8 + module.size() + 0x27)), 1) << "cut in the formatted area";
  EXPECT_EQ(count(Table({module, long_lie})), 1) << "length past the end";
  EXPECT_EQ(count(Table({module, short_lie, module})), 1) << "length below a header";
  EXPECT_EQ(count(Table({module, kEnd, module})), 2) << "the end marker does not stop the walk";
}

TEST(InstalledGigabytes, RoundsAndFallsBack) {
  EXPECT_EQ(InstalledGigabytes(16'777'216, 17'045'651'456), 16);
  EXPECT_EQ(InstalledGigabytes(0, 17'045'651'456), 16);
  EXPECT_EQ(InstalledGigabytes(2'621'440, 0), 3) << "half goes up";
}

TEST(FormatMemoryTooltip, ExplainsTheReservedMemory) {
  EXPECT_EQ(
      FormatMemoryTooltip(16, 16'777'216, 17'045'651'456),
      L"Fyzicky osazeno: 16 GB | K dispozici pro systém: 15.9 GB (128 MB vyhrazeno pro BIOS a hardware)");
  EXPECT_EQ(FormatMemoryTooltip(16, 16'777'216, 17'179'869'184 - 1'048'575),
            L"Fyzicky osazeno: 16 GB | K dispozici pro systém: 16.0 GB")
      << "less than a megabyte is not told";
}

TEST(FormatGpu, AddsTheMemoryIfKnown) {
  EXPECT_EQ(FormatGpu(L"NVIDIA GeForce RTX 3060", 12'884'901'888), L"NVIDIA GeForce RTX 3060 (12.0 GB VRAM)");
  EXPECT_EQ(FormatGpu(L"Peat Graphics", std::nullopt), L"Peat Graphics");
}

TEST(FormatBoard, JoinsMakerAndModel) {
  const struct {
    const wchar_t *manufacturer, *product, *want;
  } cases[] = {
      {L"Gigabyte Technology Co., Ltd.", L"B650 PEAT", L"Gigabyte B650 PEAT"},
      {L"A Technology B Technology", L"X", L"A X"},
      {L"Technology", L"X", L"Technology X"},
      {L"Dell Inc.", L"", L"Unknown"},
      {L"", L"0KWVT8", L"0KWVT8"},
      {L"Unknown", L"Unknown", L"Unknown"},
  };
  for (const auto& c : cases) EXPECT_EQ(FormatBoard(c.manufacturer, c.product), c.want);
}

TEST(FormatOs, CorrectsTheNameFromTheBuild) {
  struct {
    const wchar_t *product, *build, *display, *want;
  } cases[] = {
      {L"Windows 10 Pro", L"22000", L"21H2", L"Windows 11 Pro (Version 21H2)"},
      {L"Windows 10 Pro", L"21999", L"21H2", L"Windows 10 Pro (Version 21H2)"},
      {L"Windows 10 Pro", L"17763", L"Unknown", L"Windows 10 Pro"},
      {L"Windows 10 Pro", L"26100.1742", L"24H2", L"Windows 11 Pro (Version 24H2)"},
      {L"Windows Server 2022 Standard", L"26100", L"24H2", L"Windows Server 2022 Standard (Version 24H2)"},
  };
  for (const auto& c : cases) EXPECT_EQ(FormatOs(c.product, c.build, c.display), c.want);
}
