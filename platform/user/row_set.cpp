#include "user/row_set.h"

#include <algorithm>
#include <bit>

namespace quennet::user {

namespace {

constexpr int wordBits = 64;

std::size_t WordOf(int row) {
    return static_cast<std::size_t>(row / wordBits);
}

/// The bits of a word that stand for rows from `first` to `last`.
std::uint64_t MaskOf(std::size_t word, int first, int last) {
    const int start = static_cast<int>(word) * wordBits;
    const int low = std::max(first - start, 0);
    const int high = std::min(last - start, wordBits - 1);
    return ~std::uint64_t{0} << low & ~std::uint64_t{0} >> (wordBits - 1 - high);
}

}  // namespace

bool RowSet::Contains(int row) const {
    return row >= 0 && WordOf(row) < words_.size() &&
           (words_[WordOf(row)] >> row % wordBits & 1) != 0;
}

int RowSet::CountIn(int first, int last) const {
    int count = 0;
    for (std::size_t word = WordOf(first); word < words_.size() && word <= WordOf(last); ++word) {
        count += std::popcount(words_[word] & MaskOf(word, first, last));
    }
    return count;
}

int RowSet::Next(int row) const {
    for (std::size_t word = WordOf(row); word < words_.size(); ++word) {
        const int end = static_cast<int>(word + 1) * wordBits - 1;
        const std::uint64_t bits = words_[word] & MaskOf(word, row, end);
        if (bits != 0) {
            return static_cast<int>(word) * wordBits + std::countr_zero(bits);
        }
    }
    return -1;
}

void RowSet::Set(int first, int last, bool in) {
    if (last < first) {
        return;
    }
    if (in && WordOf(last) >= words_.size()) {
        words_.resize(WordOf(last) + 1);
    }
    for (std::size_t word = WordOf(first); word < words_.size() && word <= WordOf(last); ++word) {
        const std::uint64_t before = words_[word];
        const std::uint64_t mask = MaskOf(word, first, last);
        words_[word] = in ? before | mask : before & ~mask;
        count_ += std::popcount(words_[word]) - std::popcount(before);
    }
}

void RowSet::Clear() {
    words_.clear();
    count_ = 0;
}

}  // namespace quennet::user
