// The subcommands of the tessmeta command and what they share.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "model/model_file.h"
#include "zmflib/pg_uri.h"

namespace tessmeta::tool {

// Every FILE argument may also be a model on a PostgreSQL server, named by a
// "postgresql://" URI; messages show it with any password hidden.
//
// Exit statuses: 0 done, 1 the model has problems (check) or the work failed,
// 2 bad input (missing or damaged file, unknown table, bad flag).
constexpr int kExitOk = 0;
constexpr int kExitProblems = 1;
constexpr int kExitBadInput = 2;

// Prints "tessmeta: <message>" on standard error and returns `status`.
int Fail(const std::string& message, int status = kExitBadInput);

// Opens and loads a model, showing a progress bar for long loads. Null after
// printing the error.
std::unique_ptr<CModelFile> OpenModel(const std::string& path,
                                      const SModelLoadOptions& options = {});
// Saves with a progress bar for long saves; prints the error when it fails.
bool SaveModel(CModelFile& model, const SModelSaveOptions& options = {},
               const std::string& saveAsPath = "");

struct SDumpOptions {
    std::string table;  // empty: every table
    std::string format = "text";
};

// Sections of `info` and `demo` contributed by the subsystems (info_<subsystem>.cpp,
// demo_<subsystem>.cpp). A demo part builds its objects, then checks them in the
// reopened model and returns the number of problems it printed.
void PrintDictionaryInfo(CModelFile& model);
struct SDictionaryDemo;
// Binds dictionary items to model object `objectId`.
std::shared_ptr<SDictionaryDemo> BuildDictionaryDemo(CModelFile& model, ULONG objectId);
int VerifyDictionaryDemo(CModelFile& model, const SDictionaryDemo& expected);
void PrintDictionarySummary(CModelFile& model);
void PrintRepositoryInfo(CModelFile& model);
struct SRepositoryDemo;
// Records repository bookkeeping for new views of model `modelId`.
std::shared_ptr<SRepositoryDemo> BuildRepositoryDemo(CModelFile& model, ULONG modelId);
int VerifyRepositoryDemo(CModelFile& model, const SRepositoryDemo& expected);
void PrintRepositorySummary(CModelFile& model);

int RunNew(const std::string& path);
int RunInfo(const std::string& path);
int RunDump(const std::string& path, const SDumpOptions& options);
int RunCheck(const std::string& path);
int RunUpgrade(const std::string& path, const std::string& output);
int RunPurge(const std::string& path);
int RunGen(const std::string& path, std::uint64_t objects, std::uint32_t seed,
           bool everyManager = false);
int RunDemo(const std::string& path);
// The layout settings of one submodel (0: of every submodel that has any).
int RunLayout(const std::string& path, std::uint32_t submodelId);

// What info shows of the layout settings and the views.
void PrintLayoutAndViewSummary(CModelFile& model);

// The layout settings and the view the demo stores, and what it must read back.
struct SLayoutViewDemo {
    ULONG submodels[2] = {};
    ULONG view = 0;
    std::string settings;  // every parameter value of the two submodels
    CString select;        // the view's SELECT
};
// Stores settings for two new submodels and a view with fields in model `modelId`.
SLayoutViewDemo BuildLayoutViewDemo(CModelFile& model, ULONG modelId);
// The problems found in the reopened model, each printed.
int VerifyLayoutViewDemo(CModelFile& model, const SLayoutViewDemo& demo);
// Creates or refreshes the system libraries and triggers of platform 1, 2 or 3.
int RunSysMacros(const std::string& path, int platform);
int RunRepo(const std::string& path);
int RunProps(const std::string& path, std::uint32_t objectId);

// The metadata parts of info and demo (cmd_props.cpp).
void PrintMetadataInfo(CModelFile& model);
struct SMetadataDemo {
    ULONG modelId = 0;
    ULONG entityId = 0;
    int properties = 0;
    int codeObjects = 0;
    EPropertyResult refused = EPropertyResult::Done;  // a value outside the allowed list
};
// Sets properties and overrides on the model's first entity and creates one code
// object of each kind in its first model.
SMetadataDemo BuildMetadataDemo(CModelFile& model);
// Checks the reopened model against the demo and prints its lines of the summary;
// returns the number of problems.
int VerifyMetadataDemo(CModelFile& model, const SMetadataDemo& demo);
// Copy a model between a .zmf file and a server (or any two stores), losslessly.
int RunPush(const std::string& file, const std::string& uri, bool replace);
int RunPull(const std::string& uri, const std::string& file);

}  // namespace tessmeta::tool
