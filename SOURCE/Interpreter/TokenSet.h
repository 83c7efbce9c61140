// TokenSet: a set of token types, for look-ahead decisions and follow sets.
#pragma once

#include <bitset>
#include <initializer_list>

#include "Token.h"

class TokenSet {
public:
  TokenSet() = default;
  TokenSet(std::initializer_list<int> types) {
    for (int type : types) Add(type);
  }
  void Add(int type) { m_bits.set(Slot(type)); }
  bool Contains(int type) const { return m_bits.test(Slot(type)); }
  bool Empty() const { return m_bits.none(); }
  TokenSet& operator|=(const TokenSet& other) {
    m_bits |= other.m_bits;
    return *this;
  }

private:
  // The end of input (-1) takes slot 0, which no real token uses.
  static std::size_t Slot(int type) { return type < 0 ? 0 : static_cast<std::size_t>(type); }
  std::bitset<tok::TOKEN_TYPE_COUNT> m_bits;
};
