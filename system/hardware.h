#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// The machine's hardware and system as texts for the page. Numbers have a decimal point and no grouping.
// GB = 2^30 bytes.
struct HardwareSpecs {
  std::wstring cpu = L"Unknown";
  std::wstring gpu = L"Unknown GPU";
  std::wstring ram;
  std::wstring ram_tooltip;
  std::wstring motherboard = L"Unknown";
  std::wstring os = L"Unknown";
  bool is_admin = false;  // the process token is elevated
};

// Posts the processor's name. UI thread.
void getCPU(int request_id);

// Collects everything again from the registry, GetTokenInformation, EnumDisplayDevicesW, DXGI,
// GetSystemFirmwareTable, GetPhysicallyInstalledSystemMemory and GlobalMemoryStatusEx. Never fails: a
// value that cannot be read keeps its default. Any thread.
HardwareSpecs CollectHardwareSpecs();

// The installed memory modules according to the firmware. Type and speed are those of the last module
// that reports them.
struct MemoryModules {
  int32_t count = 0;
  std::wstring type = L"DDR";
  uint16_t speed_mhz = 0;  // 0: unknown
};

// Walks the structures of a raw SMBIOS table (an 8-byte header, then structures, as
// GetSystemFirmwareTable('RSMB') returns it). Reads truncated tables and tables with false lengths as
// far as possible.
MemoryModules ParseMemoryModules(std::string_view table);

// Returns "NVIDIA GeForce RTX 3060 (12.0 GB VRAM)", or only the name if the adapter's memory is unknown.
std::wstring FormatGpu(const std::wstring& name, std::optional<uint64_t> dedicated_bytes);

// Returns the installed memory in whole GB, rounded half up. Uses the memory visible to Windows if the
// firmware's figure (KB) is 0.
int32_t InstalledGigabytes(uint64_t installed_kb, uint64_t visible_bytes);

// Returns "32 GB DDR5 @ 6000 MHz (2x 16 GB)", or "16 GB DDR4" if the size is unknown.
std::wstring FormatMemory(int32_t total_gb, const MemoryModules& modules);

// Compares the installed with the usable memory, and says how much firmware and hardware reserve.
// `installed_kb` is 0 if unknown.
std::wstring FormatMemoryTooltip(int32_t total_gb, uint64_t installed_kb, uint64_t visible_bytes);

// Returns the maker (without " Technology" and everything after it) and the model, or "Unknown" without
// a model. An argument that is empty or "Unknown" counts as missing.
std::wstring FormatBoard(std::wstring manufacturer, const std::wstring& product);

// Returns "Windows 11 Pro (Version 23H2)". The registry's product name says 10 on Windows 11 too, so the
// name is corrected for builds from 22000 on. It is kept if the build has no leading digits. A display
// version of "Unknown" is omitted.
std::wstring FormatOs(std::wstring product_name, const std::wstring& build,
                      const std::wstring& display_version);
