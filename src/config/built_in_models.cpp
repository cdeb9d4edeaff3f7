#include "config/built_in_models.h"

namespace vexo {
namespace {

constexpr ModelRecord BuiltInModel(int32_t number, std::string_view name) {
  return {number, {{{}, MakeConfigText(name), {}, {}}}, {}, 0.0F};
}

}  // namespace

const std::array<ModelRecord, 2> kBuiltInModels = {BuiltInModel(451, "KM451"), BuiltInModel(452, "KM452")};

}  // namespace vexo
