// The keywords of the language: one word each, or several words of one token family.
#include "KeywordTable.h"

#include <unordered_map>

#include "Token.h"

namespace {

struct Keyword {
  const char* word;
  int type;
};

constexpr Keyword kKeywords[] = {
    // control and program
    {"if", tok::IF}, {"else", tok::ELSE}, {"for", tok::FOR}, {"while", tok::WHILE},
    {"end", tok::END}, {"function", tok::FUNCTION}, {"run", tok::RUN}, {"eval", tok::EVAL},
    {"pause", tok::PAUSE}, {"system", tok::SYSTEM}, {"quit", tok::QUIT},
    {"mthread", tok::MTHREAD}, {"nthreads", tok::NTHREADS}, {"tic", tok::TIC}, {"toc", tok::TOC},
    {"ctic", tok::CTIC}, {"TAVIX_TEST_STATEMENT", tok::TAVIX_TEST_STATEMENT},
    // console and workspace
    {"print", tok::PRINT}, {"clear", tok::CLEAR}, {"clc", tok::CLC}, {"close", tok::CLOSE},
    {"all", tok::ALL}, {"matrices", tok::MATRICES}, {"datasets", tok::DATASETS},
    {"models", tok::MODELS}, {"structures", tok::STRUCTURES}, {"strings", tok::STRINGS},
    {"who", tok::WHO}, {"save", tok::SAVE}, {"load", tok::LOAD}, {"export", tok::EXPORT},
    {"getwd", tok::GETWD}, {"setwd", tok::SETWD}, {"maxfigures", tok::MAXFIGURES},
    {"setbinary", tok::SETBINARY}, {"seed", tok::SEED}, {"tab", tok::TAB},
    // outside programs
    {"matlab", tok::MATLAB}, {"octave", tok::OCTAVE}, {"rproject", tok::RPROJECT},
    {"stata", tok::STATA},
    // constants
    {"inf", tok::INF}, {"nan", tok::NA}, {"pi", tok::PI},
    // matrix functions
    {"mod", tok::MOD}, {"size", tok::SIZE}, {"rows", tok::ROWS}, {"cols", tok::COLS},
    {"inv", tok::INV}, {"invpd", tok::INVPD}, {"trace", tok::TRACE}, {"det", tok::DET},
    {"chol", tok::CHOL}, {"reshape", tok::RESHAPE}, {"repmat", tok::REPMAT}, {"kron", tok::KRON},
    {"diag", tok::DIAG}, {"eig", tok::EIG}, {"eye", tok::EYE}, {"ones", tok::ONES},
    {"zeros", tok::ZEROS}, {"quadrature", tok::QUAD}, {"sum", tok::SUM},
    {"logsumexp", tok::LOGSUMEXP}, {"min", tok::MINCOEFF}, {"max", tok::MAXCOEFF},
    {"mean", tok::MEAN}, {"var", tok::VAR}, {"sd", tok::SD}, {"median", tok::MEDIAN},
    {"tabulate", tok::TABULATE}, {"cov", tok::COV}, {"corr", tok::CORR}, {"range", tok::RANGE},
    {"sort", tok::SORT}, {"sortrows", tok::SORTROWS}, {"floor", tok::FLOOR}, {"ceil", tok::CEIL},
    {"round", tok::ROUND}, {"betainc", tok::BETAINC}, {"gammainc", tok::GAMMAINC},
    // random draws
    {"unifrnd", tok::UNIFRND}, {"truncnrnd", tok::RND_TRUNC}, {"catrnd", tok::RND_CAT},
    {"mvnrnd", tok::MVNRND}, {"wishrnd", tok::WISHRND}, {"iwishrnd", tok::IWISHRND},
    {"drchrnd", tok::DRCHRND},
    // strings
    {"strcmp", tok::STRCMP}, {"strlength", tok::STRLENGTH}, {"substr", tok::SUBSTR},
    {"strreplace", tok::STRREPLACE}, {"strcat", tok::STRCAT}, {"mat2str", tok::MAT2STR},
    // datasets
    {"dataset", tok::DATASET}, {"create", tok::CREATE}, {"rename", tok::RENAME},
    {"set_cs", tok::SETDATATYPE2}, {"summary", tok::SUMMARY}, {"dropmissing", tok::DROPMISSING},
    {"sortd", tok::SORTDATA},
    // models and results
    {"diagnostics", tok::DIAGNOSTICS}, {"store", tok::STORE}, {"forecast", tok::FORECAST},
    {"irf", tok::IRF}, {"stabtest", tok::STABTEST}, {"predict", tok::PREDICT}, {"mfx", tok::MFX},
    {"pmp", tok::PMP}, {"test", tok::TEST}, {"compare", tok::COMPARE}, {"arima", tok::MODELS4},
    {"varm", tok::MODELS5},
    // figures
    {"plot", tok::PLOT}, {"hist", tok::HIST}, {"acf", tok::ACF}, {"plotdraws", tok::PLOTDRAWS},
    {"scatter", tok::SCATTER}, {"multiplot", tok::MULTIPLOT}, {"kden", tok::KDEN},
    {"subplot", tok::SUBPLOT},
    // families: one token type, several words
    {"true", tok::BTRUEFALSE}, {"false", tok::BTRUEFALSE},
    {"import", tok::IMPORT}, {"webimport", tok::IMPORT},
    {"abs", tok::EXP_LOG_SQRT_ABS_TRIG}, {"sqrt", tok::EXP_LOG_SQRT_ABS_TRIG},
    {"exp", tok::EXP_LOG_SQRT_ABS_TRIG}, {"log", tok::EXP_LOG_SQRT_ABS_TRIG},
    {"erf", tok::EXP_LOG_SQRT_ABS_TRIG}, {"erfc", tok::EXP_LOG_SQRT_ABS_TRIG},
    {"sin", tok::EXP_LOG_SQRT_ABS_TRIG}, {"cos", tok::EXP_LOG_SQRT_ABS_TRIG},
    {"tan", tok::EXP_LOG_SQRT_ABS_TRIG}, {"asin", tok::EXP_LOG_SQRT_ABS_TRIG},
    {"acos", tok::EXP_LOG_SQRT_ABS_TRIG}, {"atan", tok::EXP_LOG_SQRT_ABS_TRIG},
    {"gammafunc", tok::GAMMAFUNC}, {"lgammafunc", tok::GAMMAFUNC},
    {"mvgammafunc", tok::MVGAMMA}, {"lmvgammafunc", tok::MVGAMMA},
    {"betafunc", tok::BETAFUNC}, {"lbetafunc", tok::BETAFUNC},
    {"exprnd", tok::RND_P}, {"chi2rnd", tok::RND_P}, {"poissonrnd", tok::RND_P},
    {"trnd", tok::RND_P},
    {"normrnd", tok::RND_F_P}, {"lognrnd", tok::RND_F_P}, {"logitnrnd", tok::RND_F_P},
    {"logisticrnd", tok::RND_F_P}, {"evrnd", tok::RND_F_P},
    {"betarnd", tok::RND_P_P}, {"gamrnd", tok::RND_P_P}, {"frnd", tok::RND_P_P},
    {"wblrnd", tok::RND_P_P},
    {"binomrnd", tok::RND_NN_R}, {"nbinomrnd", tok::RND_NN_R},
    {"betapdf", tok::BETADIST}, {"betacdf", tok::BETADIST},
    {"chi2pdf", tok::CHI2DIST}, {"chi2cdf", tok::CHI2DIST},
    {"evpdf", tok::EVDIST}, {"evcdf", tok::EVDIST},
    {"exppdf", tok::EXPDIST}, {"expcdf", tok::EXPDIST},
    {"fpdf", tok::FDIST}, {"fcdf", tok::FDIST},
    {"gampdf", tok::GAMDIST}, {"gamcdf", tok::GAMDIST},
    {"logisticpdf", tok::LOGISTICDIST}, {"logisticcdf", tok::LOGISTICDIST},
    {"logitnpdf", tok::LOGITNDIST}, {"logitncdf", tok::LOGITNDIST},
    {"lognpdf", tok::LOGNDIST}, {"logncdf", tok::LOGNDIST},
    {"normpdf", tok::NORMDIST}, {"normcdf", tok::NORMDIST},
    {"tpdf", tok::TDIST}, {"tcdf", tok::TDIST},
    {"truncnpdf", tok::TRUNCNDIST}, {"truncncdf", tok::TRUNCNDIST},
    {"wblpdf", tok::WBLDIST}, {"wblcdf", tok::WBLDIST},
    {"mvnormpdf", tok::MVNORMDIST}, {"mvnormcdf", tok::MVNORMDIST},
    {"wishpdf", tok::WISHDIST}, {"wishcdf", tok::WISHDIST},
    {"iwishpdf", tok::IWISHDIST}, {"iwishcdf", tok::IWISHDIST},
    {"poissonpdf", tok::POISSONDIST}, {"poissoncdf", tok::POISSONDIST},
    {"binompdf", tok::BINOMDIST}, {"binomcdf", tok::BINOMDIST}, {"nbinompdf", tok::BINOMDIST},
    {"nbinomcdf", tok::BINOMDIST},
    {"strfind", tok::STRFIND}, {"strfindr", tok::STRFIND},
    {"set_ts", tok::SETDATATYPE1}, {"set_pd", tok::SETDATATYPE1},
    {"keepif", tok::KEEPDROPIF}, {"dropif", tok::KEEPDROPIF},
    {"lag", tok::LAGDIFF}, {"diff", tok::LAGDIFF},
    {"groupcounts", tok::GROUPSTATS}, {"groupmeans", tok::GROUPSTATS},
    {"groupmedians", tok::GROUPSTATS}, {"groupsums", tok::GROUPSTATS},
    {"groupvars", tok::GROUPSTATS}, {"groupsds", tok::GROUPSTATS},
    {"lm", tok::MODELS1}, {"lm_re", tok::MODELS1}, {"logit", tok::MODELS1},
    {"logit_re", tok::MODELS1}, {"probit", tok::MODELS1}, {"probit_re", tok::MODELS1},
    {"oprobit", tok::MODELS1}, {"ologit", tok::MODELS1}, {"nbinom", tok::MODELS1},
    {"poisson", tok::MODELS1}, {"sf", tok::MODELS1}, {"sf_re", tok::MODELS1},
    {"sf_dyn", tok::MODELS1}, {"sf_dyn_re", tok::MODELS1}, {"tobitI", tok::MODELS1},
    {"tobitI_re", tok::MODELS1}, {"tobitII", tok::MODELS1}, {"tobitII_re", tok::MODELS1},
    {"lm_rc", tok::MODELS2}, {"sf_rc", tok::MODELS2},
    {"sur", tok::MODELS3}, {"mvprobit", tok::MODELS3}, {"mvprobit2", tok::MODELS3},
    {"mvprobit3", tok::MODELS3},
    {"clogit", tok::MODELS6}, {"cprobit", tok::MODELS6}, {"mnlogit", tok::MODELS6},
    {"mnprobit", tok::MODELS6},
    {"lm_lc", tok::MODELS7}, {"sf_lc", tok::MODELS7},
    {"jags", tok::MODELSJAGSBUGSSTAN}, {"openbugs", tok::MODELSJAGSBUGSSTAN},
    {"stan", tok::MODELSJAGSBUGSSTAN},
};

}  // namespace

int KeywordType(std::string_view word) {
  static const std::unordered_map<std::string_view, int> table = [] {
    std::unordered_map<std::string_view, int> map;
    for (const Keyword& keyword : kKeywords) map.emplace(keyword.word, keyword.type);
    return map;
  }();
  const auto it = table.find(word);
  return it == table.end() ? tok::ID : it->second;
}

std::vector<std::string> KeywordWords() {
  std::vector<std::string> words;
  for (const Keyword& keyword : kKeywords) words.emplace_back(keyword.word);
  return words;
}
