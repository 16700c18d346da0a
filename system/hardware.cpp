#include "system/hardware.h"

#include <charconv>
#include <cmath>
#include <exception>

#include "base/byte_units.h"

namespace {

// One structure of the firmware table, possibly truncated. Fields are little endian at fixed offsets.
class SmbiosStructure {
 public:
  explicit SmbiosStructure(std::string_view bytes) : bytes_(bytes) {}
  uint8_t Byte(size_t offset) const { return static_cast<uint8_t>(bytes_[offset]); }
  uint16_t Word(size_t offset) const { return static_cast<uint16_t>(Byte(offset) | Byte(offset + 1) << 8); }
  uint8_t Type() const { return Byte(0); }
  size_t Length() const { return Byte(1); }

 private:
  std::string_view bytes_;
};

constexpr size_t kTableHeaderBytes = 8;
constexpr size_t kStructureHeaderBytes = 4;
constexpr uint8_t kMemoryDevice = 17;

constexpr struct {
  uint8_t code;
  const wchar_t* name;
} kMemoryTypes[] = {{0x18, L"DDR3"}, {0x1A, L"DDR4"}, {0x1E, L"LPDDR4"}, {0x22, L"DDR5"}, {0x23, L"LPDDR5"}};

bool IsKnownSpeed(uint16_t mhz) {
  return mhz != 0 && mhz != 0xFFFF;
}

void AddMemoryDevice(const SmbiosStructure& device, MemoryModules& modules) {
  const uint16_t size = device.Word(0x0C);
  if (size == 0 || size == 0xFFFF) return;  // empty slot, or unknown size
  ++modules.count;
  for (const auto& type : kMemoryTypes)
    if (type.code == device.Byte(0x12)) modules.type = type.name;
  if (device.Length() >= 0x17 && IsKnownSpeed(device.Word(0x15))) modules.speed_mhz = device.Word(0x15);
  // Falls back to the configured speed until a module reports its rated speed.
  if (device.Length() >= 0x24 && modules.speed_mhz == 0 && IsKnownSpeed(device.Word(0x20)))
    modules.speed_mhz = device.Word(0x20);
}

std::wstring OneDecimal(double value) {
  char text[400];  // the longest double in fixed notation has 309 digits before the point
  const std::to_chars_result end =
      std::to_chars(text, text + sizeof(text), value, std::chars_format::fixed, 1);
  return {text, end.ptr};
}

}  // namespace

MemoryModules ParseMemoryModules(std::string_view table) {
  MemoryModules modules;
  table.remove_prefix(table.size() < kTableHeaderBytes ? table.size() : kTableHeaderBytes);
  while (table.size() >= kStructureHeaderBytes) {
    const SmbiosStructure structure(table);
    const size_t length = structure.Length();
    if (length < kStructureHeaderBytes || length > table.size()) break;
    if (structure.Type() == kMemoryDevice && length >= 20) AddMemoryDevice(structure, modules);
    const size_t strings_end = table.find(std::string_view("\0\0", 2), length);
    if (strings_end == table.npos) break;
    table.remove_prefix(strings_end + 2);
  }
  return modules;
}

std::wstring FormatGpu(const std::wstring& name, std::optional<uint64_t> dedicated_bytes) {
  if (!dedicated_bytes) return name;
  return name + L" (" + OneDecimal(static_cast<double>(*dedicated_bytes) / kBytesPerGigabyte) + L" GB VRAM)";
}

int32_t InstalledGigabytes(uint64_t installed_kb, uint64_t visible_bytes) {
  const double gigabytes = installed_kb != 0
                               ? static_cast<double>(installed_kb) / (kBytesPerGigabyte / 1024.0)
                               : static_cast<double>(visible_bytes) / kBytesPerGigabyte;
  return static_cast<int32_t>(std::llround(gigabytes));
}

std::wstring FormatMemory(int32_t total_gb, const MemoryModules& modules) {
  if (total_gb < 1) return L"16 GB DDR4";  // deliberately shown if the size could not be determined
  std::wstring text = std::to_wstring(total_gb) + L" GB";
  if (modules.type != L"DDR" || modules.speed_mhz > 0) {
    text += L" " + modules.type;
    if (modules.speed_mhz > 0) text += L" @ " + std::to_wstring(modules.speed_mhz) + L" MHz";
  }
  if (modules.count >= 2)
    text +=
        L" (" + std::to_wstring(modules.count) + L"x " + std::to_wstring(total_gb / modules.count) + L" GB)";
  return text;
}

std::wstring FormatMemoryTooltip(int32_t total_gb, uint64_t installed_kb, uint64_t visible_bytes) {
  std::wstring text = L"Fyzicky osazeno: " + std::to_wstring(total_gb) + L" GB | K dispozici pro systém: " +
                      OneDecimal(static_cast<double>(visible_bytes) / kBytesPerGigabyte) + L" GB";
  const uint64_t installed_bytes = installed_kb * 1024;
  const uint64_t reserved_mb = installed_bytes > visible_bytes ? (installed_bytes - visible_bytes) >> 20 : 0;
  if (reserved_mb > 0) text += L" (" + std::to_wstring(reserved_mb) + L" MB vyhrazeno pro BIOS a hardware)";
  return text;
}

std::wstring FormatBoard(std::wstring manufacturer, const std::wstring& product) {
  auto missing = [](const std::wstring& text) { return text.empty() || text == L"Unknown"; };
  if (missing(product)) return L"Unknown";
  if (missing(manufacturer)) return product;
  const size_t cut = manufacturer.find(L" Technology");
  if (cut != manufacturer.npos) manufacturer.erase(cut);
  return manufacturer + L" " + product;
}

std::wstring FormatOs(std::wstring product_name, const std::wstring& build,
                      const std::wstring& display_version) {
  constexpr std::wstring_view kOldName = L"Windows 10";
  int build_number = 0;
  try {
    build_number = std::stoi(build);
  } catch (const std::exception&) {
    // Not a number, or too large: keep the name.
  }
  const size_t found = product_name.find(kOldName);
  if (build_number >= 22'000 && found != product_name.npos)
    product_name.replace(found, kOldName.size(), L"Windows 11");
  if (display_version != L"Unknown") product_name += L" (Version " + display_version + L")";
  return product_name;
}
