// The records of include/tq_mom/runtime.h that are ours: what stands in for the runtime library's own there has the
// layout that is documented with it.
#include <gtest/gtest.h>
#include <tq_mom/tq_mom.h>

#include <cstddef>

namespace {

// Pointers and what is before them: the same on every target, measured in words.
TEST(DeviceRecords, ListsAndEvents) {
  constexpr std::size_t kWord = sizeof(void*);
  EXPECT_EQ(offsetof(tq_thread_list, head), 0U);
  EXPECT_EQ(offsetof(tq_thread_list, tail), kWord);
  EXPECT_EQ(offsetof(tq_thread_list, count), 2 * kWord);
  EXPECT_EQ(sizeof(tq_thread_list), 3 * kWord);
  EXPECT_EQ(offsetof(tq_thread_debug_list, head), 0U);
  EXPECT_EQ(offsetof(tq_thread_debug_list, tail), kWord);
  EXPECT_EQ(offsetof(tq_thread_debug_list, count), 2 * kWord);
  EXPECT_EQ(sizeof(tq_thread_debug_list), 3 * kWord);

  constexpr std::size_t kIndex = 6 * kWord + sizeof(timeval);
  EXPECT_EQ(offsetof(tq_thread, pfd_index), kIndex);
  EXPECT_EQ(offsetof(tq_thread, type), kIndex + 2);
  EXPECT_EQ(offsetof(tq_thread, priority), kIndex + 3);
  EXPECT_EQ(offsetof(tq_thread, flag), kIndex + 4);
  EXPECT_EQ(offsetof(tq_thread, name), kIndex + 8);
  EXPECT_EQ(sizeof(tq_thread), kWord == 4 ? 52U : 88U);
  EXPECT_EQ(sizeof(tq_thread_master), kWord == 4 ? 16492U : 16584U);
}

TEST(DeviceRecords, SizesThatAreTheSameEverywhere) {
  EXPECT_EQ(sizeof(tq_fd_set), 8192U);
  EXPECT_EQ(sizeof(tq_mom_cmd_t), 4U);
  EXPECT_EQ(sizeof(tq_mom_batch_over_flag_t), 4U);
  EXPECT_EQ(sizeof(tq_mom_db_type_t), 4U);
  EXPECT_EQ(sizeof(tq_mom_congest_t), 1040U);
  EXPECT_EQ(sizeof(tq_mom_zscore_res_t), 16U);
}

}  // namespace
