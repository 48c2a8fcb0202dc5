// Reading the features of the processor that the thread runs on.
#include "kestu_cpu_features.h"

#include "base/cpu_features.hpp"
#include "machine/cpu_leaf.hpp"

#include <iterator>

namespace {

using namespace kestu;

// A leaf beyond the highest answers as another one does.
bool has_word(const Leaves &leaves, const FeatureWord &word) {
    const uint32_t first = word.leaf & 0x80000000;
    if (word.leaf > leaves(first).eax)
        return false;
    return word.leaf != 7 || word.subleaf <= leaves(7).eax;
}

uint32_t read_word(const Leaves &leaves, const FeatureWord &word) {
    if (!has_word(leaves, word))
        return 0;
    const Leaf leaf = leaves(word.leaf, word.subleaf);
    const uint32_t registers[] = {leaf.eax, leaf.ebx, leaf.ecx, leaf.edx};
    return registers[word.reg];
}

} // namespace

void kestu_cpu_features_read(kestu_cpu_features_t *features) {
    *features = {};
    for (size_t i = 0; i < std::size(feature_words); ++i)
        features->words[i] = read_word(running_processor(), feature_words[i]);
    read_saved_registers(*features);
}
