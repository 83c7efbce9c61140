// FigureRegistry: the figures of a session by title, with or without windows to show them.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Figure.h"

// Figures are replaced, never changed in place, so a window may keep drawing the version it was
// given while the job makes the next one.
class FigureRegistry {
public:
  // The next title, "Figure N", N counting up from 1 over the session.
  std::string NextTitle() { return "Figure " + std::to_string(m_next++); }
  std::size_t Count() const { return m_figures.size(); }
  std::shared_ptr<const Figure> Find(const std::string& title) const;
  // Adds or replaces the figure of its title.
  void Store(std::shared_ptr<const Figure> figure);
  // Removes a figure; false when none has that title.
  bool Remove(const std::string& title);
  // The titles in the order the figures were made.
  std::vector<std::string> Titles() const { return m_order; }
  void Clear();

  // The latest multiplot and the panel (0-based) that `subplot` chose for the next plot, if any.
  std::string multiplot;
  int chosenPanel = -1;

private:
  std::map<std::string, std::shared_ptr<const Figure>> m_figures;
  std::vector<std::string> m_order;
  int m_next = 1;
};
