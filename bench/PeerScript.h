// Runs a peer's sampler through an R script of bench/ on the same data as a Tavix benchmark: the
// data go to a temporary CSV file (y, then one column per regressor), the script prints the seconds
// its sampler took and the smallest effective sample size over the coefficients.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <Eigen/Dense>

// False when R with MCMCpack is not installed or the script gave no figures. `program` is the
// benchmark's argv[0] (the scripts are found from it); `argument` goes to the script after the file.
inline bool RunPeerScript(const char* program, const std::string& scriptName, const Eigen::VectorXd& y,
                          const Eigen::MatrixXd& X, const std::string& argument, double& seconds, double& ess) {
  if (std::system("Rscript -e 'library(MCMCpack)' >/dev/null 2>&1") != 0) return false;
  const auto file = std::filesystem::temp_directory_path() / ("tavix_bench_" + scriptName + ".csv");
  {
    std::ofstream out(file);
    out << "y";
    for (Eigen::Index j = 0; j < X.cols(); ++j) out << ",x" << j;
    out << "\n";
    out.precision(17);
    for (Eigen::Index i = 0; i < y.size(); ++i) {
      out << y(i);
      for (Eigen::Index j = 0; j < X.cols(); ++j) out << "," << X(i, j);
      out << "\n";
    }
  }
  std::string script = program;
  const auto slash = script.rfind('/');
  script = (slash == std::string::npos ? std::string(".") : script.substr(0, slash)) + "/../../bench/" + scriptName;
  const std::string command =
      "Rscript --vanilla \"" + script + "\" \"" + file.string() + "\" " + argument + " 2>/dev/null";
  FILE* pipe = popen(command.c_str(), "r");
  const bool read = pipe && std::fscanf(pipe, "%lf %lf", &seconds, &ess) == 2;
  if (pipe) pclose(pipe);
  std::filesystem::remove(file);
  return read;
}
