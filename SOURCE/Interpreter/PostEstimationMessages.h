// The message texts of the post-estimation statements, exactly as they are printed; "{}" marks
// inserted text.
#pragma once

namespace msg {

inline constexpr const char* kNotAModel = "\"{}\" is not a model.";
inline constexpr const char* kNoModels = "The current workspace does not contain any models.";
inline constexpr const char* kUnknownOption = "Unknown optional argument \"{}\" passed to \"{}\".";
inline constexpr const char* kOnlyModelOptions = "The \"{}\" function takes only models as optional arguments.";
inline constexpr const char* kInterrupted = "Operation interrupted.";

inline constexpr const char* kMfxOpt = "The optional argument passed to the \"mfx\" function must be a matrix.";
inline constexpr const char* kMfxPoint =
    "The value of the \"point\" argument must be either a vector or one of the following strings:\n"
    "-> \"mean\" (default)\n-> \"median\"\n-> \"x_i\"";
inline constexpr const char* kMfxType = "The type of marginal effects to be calculated must be a positive integer.";
inline constexpr const char* kMfxMissing = "Model \"{}\" does not provide a marginal-effects function.";

inline constexpr const char* kPredictOpt =
    "The optional argument passed to the \"predict\" function must be a matrix.";
inline constexpr const char* kPredictType = "The type of predictions to be made must be a positive integer.";
inline constexpr const char* kPredictPoint =
    "The value of the \"point\" argument must be either a matrix or the string \"x_i\".";
inline constexpr const char* kPredictStats = "The \"stats\" argument must be set to either \"true\" or \"false\".";
inline constexpr const char* kPredictMissing = "Model \"{}\" does not provide a predict function.";

inline constexpr const char* kForecastHorizon =
    "The number of periods for which to provide forecasts must be a positive integer.";
inline constexpr const char* kForecastW =
    "The values of exogenous variables, W, used to provide forecasts must be a given in a matrix.";
inline constexpr const char* kForecastInconsistent =
    "Both a number of forecast periods and values for the exogenous variables were provided, but the "
    "dimensions are inconsistent: \"horizon\" is set to {} but the number of rows of \"W\" is {}.";
inline constexpr const char* kForecastMissing = "Model \"{}\" does not provide a forecast function.";

inline constexpr const char* kIrfBoolean =
    "The left-hand side string \"{}\" should be either \"orthogonal\" or \"scaled\" when the right-hand "
    "side is a boolean (true or false).";
inline constexpr const char* kIrfExpression =
    "The left-hand side string \"{}\" should be either \"model\" or \"horizon\" when the right-hand side "
    "is a Tavix expression.";
inline constexpr const char* kIrfHorizon =
    "The number of periods for which to calculate impulse responses must be a positive integer.";
inline constexpr const char* kIrfMissing =
    "Model \"{}\" does not provide a function to calculate/plot impulse responses.";

inline constexpr const char* kStabtestMissing = "Model \"{}\" does not provide a stability-test function.";
inline constexpr const char* kStoreMissing = "Model \"{}\" does not provide a store function.";
inline constexpr const char* kDiagnosticsFailed =
    "Tavix could not calculate MCMC diagnostics for \"{}\". ";

inline constexpr const char* kPlotdrawsNoElement = "Model \"{}\" has no element \"{}\".";
inline constexpr const char* kPlotdrawsMissingValues =
    "Element \"{}\" passed to \"plotdraws\" contains missing values. Consider using the \"dropmissing\" "
    "function to clear the data before calling \"plotdraws\".";

inline constexpr const char* kTestCases = "The conditions provided for testing have different number of cases (rows).";

inline constexpr const char* kPmpUndefined = "symbol \"{}\" is not defined.";
inline constexpr const char* kPmpPriorsVector =
    "The \"priors\" optional argument must be a vector of positive numbers that sum to unity.";
inline constexpr const char* kPmpPriorsValues = "Prior model probabilities must be positive and sum to unity.";
inline constexpr const char* kPmpPriorsSize =
    "The size of the \"priors\" optional argument must match the number of models.";
inline constexpr const char* kPmpUnknownOption = "Unknown optional argument \"{}\"";
inline constexpr const char* kPmpNoLogML = "The log-marginal likelihood is not available for model \"{}\".";

}  // namespace msg
