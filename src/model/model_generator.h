// Synthetic models for benchmarks and large-model tests.
#pragma once

#include <cstdint>

#include "model/model_file.h"

namespace tessmeta {

struct SGenerateOptions {
    std::uint64_t objects = 1000;  // unique objects in all, those the model had included
    std::uint32_t seed = 1;
    // Also fill the other managers with their shares of a working model: data
    // dictionary reference values linked in chains, colour overrides, the diagram's
    // layout settings, dictionary items of every kind with their bindings,
    // properties with values, meta-class members, views and repository modifications.
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
    // Dictionary items of the other kinds, and bindings of items to objects
    // (domains to attributes, attachments to entities).
    std::uint64_t domains = 0;
    std::uint64_t defaults = 0;
    std::uint64_t rules = 0;
    std::uint64_t userDataTypes = 0;
    std::uint64_t attachments = 0;
    std::uint64_t libraries = 0;
    std::uint64_t triggers = 0;
    std::uint64_t procedures = 0;
    std::uint64_t bindings = 0;
    std::uint64_t propertyValues = 0;
    std::uint64_t metaClassMembers = 0;  // index members (property values add their own)
    std::uint64_t modifications = 0;
    std::uint64_t views = 0;
    std::uint64_t viewParts = 0;  // components, columns and fields
};

// Fills a model with a model object, a diagram with its domain, and objects of
// realistic types (entities, attributes, relationships, indexes, views, displays)
// with names, definitions and notes; about one text in ten is long (255 bytes or
// more). The same seed
// gives the same model.
SGenerateSummary GenerateModel(CModelFile& model, const SGenerateOptions& options);

}  // namespace tessmeta
