// Shared between the generator's files: its random source and the second half of
// its fill of every manager.
#pragma once

#include <cstdint>
#include <random>
#include <string>

#include "model/model_generator.h"

namespace tessmeta {

class CTextMaker {
  public:
    explicit CTextMaker(std::uint32_t seed) : m_random(seed) {}

    // A sentence of `words` words from `vocabulary`; one call in four makes it 255
    // bytes or longer, which makes about one text in ten long once the (short)
    // names are counted.
    template <std::size_t N>
    std::string Sentence(int words, bool& isLong, const char* const (&vocabulary)[N]) {
        isLong = Chance(25);
        std::string text;
        while (static_cast<int>(text.size()) < (isLong ? 300 : 0) || words-- > 0) {
            if (!text.empty()) text += ' ';
            text += vocabulary[Below(N)];
        }
        return text;
    }
    bool Chance(unsigned percent) { return Below(100) < percent; }
    unsigned Below(std::size_t n) { return static_cast<unsigned>(m_random() % n); }

  private:
    std::mt19937 m_random;
};

// Dictionary items of every kind with their bindings, properties with values,
// meta-class members, views and repository modifications; runs after the objects
// with a generator of its own.
void GenerateMoreManagerShares(CModelFile& model, const SGenerateOptions& options, ULONG modelId,
                               SGenerateSummary& summary);

}  // namespace tessmeta
