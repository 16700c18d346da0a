#include "system/status.h"

#include "base/page.h"
#include "base/text.h"

namespace {

constexpr int kWaitRounds = 15;
constexpr unsigned kWaitRoundMs = 2000;

}  // namespace

nlohmann::json DescribeStatus(bool service_active, const HardwareSpecs& specs) {
  return {{"isAdmin", specs.is_admin},
          {"serviceActive", service_active},
          {"specs",
           {{"cpu", WideToUtf8(specs.cpu)},
            {"gpu", WideToUtf8(specs.gpu)},
            {"ram", WideToUtf8(specs.ram)},
            {"ramTooltip", WideToUtf8(specs.ram_tooltip)},
            {"motherboard", WideToUtf8(specs.motherboard)},
            {"os", WideToUtf8(specs.os)}}}};
}

void PushStatus(const StatusSources& sources) {
  const bool service_active = sources.is_service_running();
  const HardwareSpecs specs = sources.collect_specs();
  PostReply("status", 0, true, DescribeStatus(service_active, specs));
  if (service_active || specs.is_admin) return;

  for (int round = 0; round < kWaitRounds; ++round) {
    sources.sleep(kWaitRoundMs);
    if (!sources.is_service_running()) continue;
    PostReply("status", 0, true, DescribeStatus(true, specs));
    return;
  }
}
