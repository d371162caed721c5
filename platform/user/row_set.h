#pragma once
// A set of rows of a list, a bit each.

#include <cstdint>
#include <vector>

namespace quennet::user {

class RowSet {
  public:
    bool Contains(int row) const;
    int Count() const { return count_; }
    /// The rows from `first` to `last`, both included, that are in the set.
    int CountIn(int first, int last) const;
    /// The first row of the set from `row` on, -1 for none.
    int Next(int row) const;

    /// Puts in or takes out the rows from `first` to `last`, both included.
    void Set(int first, int last, bool in);
    void Clear();

  private:
    std::vector<std::uint64_t> words_;  // up to the last row that ever was in
    int count_ = 0;
};

}  // namespace quennet::user
