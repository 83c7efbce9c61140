// FigureRegistry: figures by title, in order of making.
#include "FigureRegistry.h"

#include <algorithm>

std::shared_ptr<const Figure> FigureRegistry::Find(const std::string& title) const {
  const auto it = m_figures.find(title);
  return it == m_figures.end() ? nullptr : it->second;
}

void FigureRegistry::Store(std::shared_ptr<const Figure> figure) {
  const std::string title = figure->title;
  if (m_figures.find(title) == m_figures.end()) m_order.push_back(title);
  m_figures[title] = std::move(figure);
}

bool FigureRegistry::Remove(const std::string& title) {
  if (m_figures.erase(title) == 0) return false;
  m_order.erase(std::remove(m_order.begin(), m_order.end(), title), m_order.end());
  if (title == multiplot) {
    multiplot.clear();
    chosenPanel = -1;
  }
  return true;
}

void FigureRegistry::Clear() {
  m_figures.clear();
  m_order.clear();
  multiplot.clear();
  chosenPanel = -1;
}
