#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// What the machine is, as the texts that the page shows. Numbers are printed with a decimal point and without
// grouping. GB = 2^30 bytes.
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

// Collects everything afresh: registry, GetTokenInformation, EnumDisplayDevicesW, DXGI,
// GetSystemFirmwareTable, GetPhysicallyInstalledSystemMemory, GlobalMemoryStatusEx. Never fails; what cannot
// be read keeps its default. Any thread.
HardwareSpecs CollectHardwareSpecs();

// Fitted memory modules as the firmware tells. Type and speed are those of the last module that tells any.
struct MemoryModules {
  int32_t count = 0;
  std::wstring type = L"DDR";
  uint16_t speed_mhz = 0;  // 0: unknown
};

// Walks the structures of a raw SMBIOS table (8-byte header, then structures, as
// GetSystemFirmwareTable('RSMB') gives it). Tables that are cut or lie about lengths are
// read as far as they go.
MemoryModules ParseMemoryModules(std::string_view table);

// "NVIDIA GeForce RTX 3060 (12.0 GB VRAM)"; the bare name when the adapter's memory is not known.
std::wstring FormatGpu(const std::wstring& name, std::optional<uint64_t> dedicated_bytes);

// Installed memory in whole GB, rounded half up; from the memory that Windows sees when the
// firmware's figure (KB) is 0.
int32_t InstalledGigabytes(uint64_t installed_kb, uint64_t visible_bytes);

// "32 GB DDR5 @ 6000 MHz (2x 16 GB)"; "16 GB DDR4" when no size is known.
std::wstring FormatMemory(int32_t total_gb, const MemoryModules& modules);

// Installed against usable memory, and what firmware and hardware keep for themselves. `installed_kb` is 0
// when not known.
std::wstring FormatMemoryTooltip(int32_t total_gb, uint64_t installed_kb, uint64_t visible_bytes);

// Maker (without " Technology" and what follows it) and model; "Unknown" without a model. Takes "Unknown" and
// empty as missing.
std::wstring FormatBoard(std::wstring manufacturer, const std::wstring& product);

// "Windows 11 Pro (Version 23H2)". The registry's product name says 10 on Windows 11 too, so builds
// from 22000 on are corrected. A build without leading digits leaves the name, the display version
// "Unknown" is left out.
std::wstring FormatOs(std::wstring product_name, const std::wstring& build,
                      const std::wstring& display_version);
