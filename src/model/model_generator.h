// Synthetic models for benchmarks and large-model tests.
#pragma once

#include <cstdint>

#include "model/model_file.h"

namespace tessmeta {

struct SGenerateOptions {
    std::uint64_t objects = 1000;  // unique objects in all, those the model had included
    std::uint32_t seed = 1;
    // Also fill the other managers with their shares of a working model: data
    // dictionary reference values bound to attributes through dictionary links,
    // colour overrides and the diagram's layout settings.
    bool everyManager = false;
};

struct SGenerateSummary {
    std::uint64_t objects = 0;
    std::uint64_t usages = 0;
    std::uint64_t longTexts = 0;  // texts of 255 bytes or more
    std::uint64_t dictionaryItems = 0;
    std::uint64_t dictionaryLinks = 0;
    std::uint64_t overrides = 0;
    std::uint64_t layoutSettings = 0;
};

// Fills a model with a model object, a diagram with its domain, and objects of
// realistic types (entities, attributes, relationships, indexes, views, displays)
// with names, definitions and notes; about one text in ten is long (255 bytes or
// more). The same seed
// gives the same model.
SGenerateSummary GenerateModel(CModelFile& model, const SGenerateOptions& options);

}  // namespace tessmeta
