// ModelFamily: the table of families, filled by each family folder's registration.
#include "ModelFamily.h"

namespace {

std::map<std::string, FamilyInterpreter>& Families() {
  static std::map<std::string, FamilyInterpreter> families;
  return families;
}

}  // namespace

ModelFamilyRegistration::ModelFamilyRegistration(std::vector<std::string> keywords,
                                                 FamilyInterpreter interpreter) {
  for (auto& keyword : keywords) Families()[std::move(keyword)] = interpreter;
}

FamilyInterpreter FindModelFamily(const std::string& keyword) {
  const auto it = Families().find(keyword);
  return it == Families().end() ? nullptr : it->second;
}
