#include <stdexcept>

#include "system/hardware.h"
#include "testing/fuzz_target.h"

FUZZ_TARGET(smbios, bytes) {
  const MemoryModules modules = ParseMemoryModules(bytes);
  // A counted module takes at least 20 bytes and the two zeros at its end.
  if (modules.count < 0 || static_cast<size_t>(modules.count) > bytes.size() / 20)
    throw std::logic_error("more modules than the table has room for");
  if (modules.speed_mhz == 0xFFFF) throw std::logic_error("the unknown speed was taken");
  if (FormatMemory(InstalledGigabytes(16'777'216, 0), modules).find(L"16 GB") != 0)
    throw std::logic_error("memory line");
}
