// The rows of each family of built-in functions; the table joins them.
#pragma once

#include <span>

#include "BuiltinCall.h"

std::span<const BuiltinRow> ShapeBuiltins();
std::span<const BuiltinRow> LinearAlgebraBuiltins();
std::span<const BuiltinRow> ElementBuiltins();
std::span<const BuiltinRow> SortBuiltins();
std::span<const BuiltinRow> StatisticsBuiltins();
std::span<const BuiltinRow> RandomBuiltins();
std::span<const BuiltinRow> MultivariateRandomBuiltins();
std::span<const BuiltinRow> DistributionBuiltins();
std::span<const BuiltinRow> StringBuiltins();
std::span<const BuiltinRow> DatasetBuiltins();
std::span<const BuiltinRow> DatasetStructureBuiltins();
std::span<const BuiltinRow> ExportBuiltins();
std::span<const BuiltinRow> WorkspaceFileBuiltins();
std::span<const BuiltinRow> PlotBuiltins();

// Checks the range a:b held by arguments `at` and `at + 1` against a string of `length`
// characters; returns a (1-based).
std::size_t CheckedStringRange(const BuiltinCall& call, std::size_t at, std::size_t length);
