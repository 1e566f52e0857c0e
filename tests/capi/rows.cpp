// SPDX-License-Identifier: Apache-2.0
//
// The properties of every C entry point.
#include "tests/capi/rows.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <new>

namespace {

long live_blocks = 0;

// The text of a step up to its arguments.
std::string operation(const std::string& step) { return step.substr(0, step.find('(')); }

}  // namespace

// Counts the blocks that are in use, so that a leak shows without a sanitizer too.
void* operator new(std::size_t size) {
  void* const block = std::malloc(size != 0 ? size : 1);
  if (block == nullptr) throw std::bad_alloc();
  ++live_blocks;
  return block;
}
void operator delete(void* block) noexcept {
  if (block != nullptr) --live_blocks;
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept { operator delete(block); }

namespace vorn::test {

bool Outputs::touched(const unsigned char* from, const unsigned char* to) {
  return std::any_of(from, to, [](unsigned char byte) { return byte != kPattern; });
}

std::string Outputs::join(bool shape) const {
  std::string all;
  std::size_t end = 0;
  for (int i = 0; i < kPlaces; ++i) {
    std::string value = "-";
    if (touched(bytes_[i], bytes_[i] + kPlaceBytes)) value = read_[i] ? read_[i](bytes_[i]) : "+";
    if (shape && value != "-") value = value.back() == '+' ? "*+" : "*";
    all += (i == 0 ? "" : " ") + value;
    if (value != "-") end = all.size();
  }
  return all.substr(0, end);
}

std::string Outputs::text() const { return join(false); }
std::string Outputs::shape() const { return join(true); }

std::string row_name(const testing::TestParamInfo<Row>& info) {
  return info.param.name + std::string("_") + std::to_string(info.index);
}

TEST_P(Rows, KeepTheContract) {
  const Row& row = GetParam();
  const bool shape = row.outputs.find('*') != std::string::npos;

  host().reset();
  host().answers = true;
  Outputs outputs;
  EXPECT_EQ(row.result, row.call(outputs));
  EXPECT_EQ(row.outputs, shape ? outputs.shape() : outputs.text());
  const std::vector<std::string> steps = host().steps;
  std::vector<std::string> asked;
  std::copy_if(steps.begin(), steps.end(), std::back_inserter(asked),
               [&](const auto& step) { return operation(step) == operation(row.step); });
  ASSERT_EQ(1u, asked.size());
  EXPECT_EQ(row.step, asked[0].substr(0, std::strlen(row.step)));

  for (std::size_t k = 1; k <= steps.size(); ++k) {
    SCOPED_TRACE("step " + steps[k - 1]);
    const bool survives = row.survives.count(k) != 0;

    host().reset();
    host().answers = true;
    host().refuse = k;
    Outputs refused;
    EXPECT_EQ(survives ? row.result : 0, row.call(refused));
    EXPECT_EQ(survives ? row.outputs : row.after_failure, shape ? refused.shape() : refused.text());

    host().reset();
    const long before = live_blocks;
    host().answers = true;
    host().throws = k;
    Outputs thrown;
    EXPECT_THROW(row.call(thrown), Thrown);
    host().reset();
    EXPECT_EQ(before, live_blocks);
    EXPECT_EQ("", thrown.text());
  }
}

}  // namespace vorn::test
