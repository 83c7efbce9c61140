// ModelFamily: the table of families, filled by each family folder's registration.
#include "ModelFamily.h"

namespace {

std::map<std::string, FamilyInterpreter>& Families() {
  static std::map<std::string, FamilyInterpreter> families;
  return families;
}

std::map<std::string, FamilyLabeller>& Labellers() {
  static std::map<std::string, FamilyLabeller> labellers;
  return labellers;
}

}  // namespace

ModelFamilyRegistration::ModelFamilyRegistration(std::vector<std::string> keywords,
                                                 FamilyInterpreter interpreter, FamilyLabeller labeller) {
  for (auto& keyword : keywords) {
    if (labeller) Labellers()[keyword] = labeller;
    Families()[std::move(keyword)] = interpreter;
  }
}

FamilyInterpreter FindModelFamily(const std::string& keyword) {
  const auto it = Families().find(keyword);
  return it == Families().end() ? nullptr : it->second;
}

FamilyLabeller FindModelLabeller(const std::string& keyword) {
  const auto it = Labellers().find(keyword);
  return it == Labellers().end() ? nullptr : it->second;
}
