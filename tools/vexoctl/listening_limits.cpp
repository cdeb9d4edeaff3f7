#include "vexoctl/listening_limits.h"

#include <limits>

#include "vexoctl/whole_number.h"

namespace vexoctl {

LimitOptions::LimitOptions(CLI::App* command)
    : count_(command->add_option("--count")->type_name("N")->description("Stop after N events")),
      time_(command->add_option("--for")->type_name("MS")->description("Stop after MS milliseconds")) {
  for (CLI::Option* const option : {count_, time_}) {
    option->transform(WholeNumber(1, std::numeric_limits<uint32_t>::max()));
  }
}

ListeningLimits LimitOptions::Read() const {
  ListeningLimits limits;
  if (count_->count() > 0) {
    limits.events = count_->as<uint32_t>();
  }
  if (time_->count() > 0) {
    limits.time = std::chrono::milliseconds(time_->as<uint32_t>());
  }
  return limits;
}

}  // namespace vexoctl
