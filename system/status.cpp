#include "system/status.h"

#include "base/page.h"
#include "base/reply.h"
#include "base/text.h"

namespace {

constexpr int kWaitRounds = 15;
constexpr unsigned kWaitRoundMs = 2000;

}  // namespace

nlohmann::json BuildStatus(int request_id, bool service_active, const HardwareSpecs& specs) {
  nlohmann::json status = MakeReply("status", true, request_id);
  status["isAdmin"] = specs.is_admin;
  status["serviceActive"] = service_active;
  status["specs"] = {{"cpu", WideToUtf8(specs.cpu)},
                     {"gpu", WideToUtf8(specs.gpu)},
                     {"ram", WideToUtf8(specs.ram)},
                     {"ramTooltip", WideToUtf8(specs.ram_tooltip)},
                     {"motherboard", WideToUtf8(specs.motherboard)},
                     {"os", WideToUtf8(specs.os)}};
  return status;
}

void PushStatus(const StatusSources& sources) {
  const bool service_active = sources.is_service_running();
  const HardwareSpecs specs = sources.collect_specs();
  nlohmann::json status = BuildStatus(0, service_active, specs);
  PostJsonToJs(status.dump());
  if (service_active || specs.is_admin) return;

  for (int round = 0; round < kWaitRounds; ++round) {
    sources.sleep(kWaitRoundMs);
    if (!sources.is_service_running()) continue;
    status["serviceActive"] = true;
    PostJsonToJs(status.dump());
    return;
  }
}
