// TavixOrderStructure: the order of the outputs.
#include "TavixOrderStructure.h"

void TavixOrderStructure::Clear() {
  m_members.clear();
  m_order.clear();
}

void TavixOrderStructure::AddElementOrder(int position, int code) {
  if (position < 0) return;
  if (static_cast<std::size_t>(position) >= m_order.size()) {
    m_order.resize(static_cast<std::size_t>(position) + 1, kind::UNKNOWN);
  }
  m_order[static_cast<std::size_t>(position)] = code;
}

int TavixOrderStructure::GetItemCode(int position) const {
  if (position < 0 || static_cast<std::size_t>(position) >= m_order.size()) return kind::UNKNOWN;
  return m_order[static_cast<std::size_t>(position)];
}

void TavixOrderStructure::Append(const TavixValue& value) {
  const int position = NumberOfElements();
  SetValue(std::to_string(position), value);
  AddElementOrder(position, value.code);
}
