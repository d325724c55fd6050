#include <cmath>
#include <deque>
#include <limits>

#include "kit_fixture.h"

namespace hostkit {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

using Members = std::vector<std::string>;
using Scored = std::vector<std::pair<std::string, double>>;

class SortedSets : public KitTest {
 protected:
  int Add(const Scored& scored) {
    std::deque<Obj> objects;
    std::vector<void*> members;
    std::vector<double> scores;
    for (const auto& [member, score] : scored) {
      members.push_back(static_cast<tq_obj*>(objects.emplace_back("z", member)));
      scores.push_back(score);
    }
    return tq_mom_zadd_sync(g, 0, scores.data(), members.data(), static_cast<int>(members.size()));
  }

  int Remove(const Members& names) {
    std::deque<Obj> objects;
    std::vector<void*> members;
    for (const std::string& member : names) {
      members.push_back(static_cast<tq_obj*>(objects.emplace_back("z", member)));
    }
    return tq_mom_zrem_ext_sync(g, 0, nullptr, members.data(), static_cast<int>(members.size()));
  }

  template <typename Record> static Scored Take(Record* result, int (*release)(Record*)) {
    EXPECT_EQ(result->error_code, TQ_MOM_OK);
    Scored scored;
    for (std::size_t index = 0; index < result->count; ++index) {
      EXPECT_STREQ(tq_obj_key(result->value[index], nullptr), "z");
      scored.emplace_back(ValueOf(result->value[index]), result->score[index]);
    }
    EXPECT_EQ(release(result), TQ_MOM_OK);
    return scored;
  }

  Scored Range(int start, int stop) {
    return Take(tq_mom_zrange_sync(g, 0, Obj("z"), start, stop), tq_mom_zrange_res_free);
  }

  Scored ByScore(double min, double max) {
    return Take(tq_mom_zrangebyscore_sync(g, 0, Obj("z"), min, max), tq_mom_zrangebyscore_res_free);
  }

  std::optional<double> Score(std::string_view member) {
    tq_mom_zscore_res_t* result = tq_mom_zscore_sync(g, 0, Obj("z", member));
    EXPECT_EQ(result->error_code, TQ_MOM_OK);
    const auto score = result->exist != 0 ? std::optional<double>(result->score) : std::nullopt;
    EXPECT_EQ(tq_mom_zscore_res_free(result), TQ_MOM_OK);
    return score;
  }

  int Rank(std::string_view member) { return tq_mom_zrank_sync(g, 0, Obj("z", member)); }
};

TEST_F(SortedSets, AreOrderedByScoreThenBytes) {
  EXPECT_EQ(Add({{"b", 1}, {"\xff", 1}, {"a", 1}, {"first", -2.5}, {"last", 7}, {"", 1}}), 6);
  EXPECT_EQ(Range(0, -1), (Scored{{"first", -2.5}, {"", 1}, {"a", 1}, {"b", 1}, {"\xff", 1}, {"last", 7}}));
  EXPECT_EQ(tq_mom_zcard_sync(g, 0, Obj("z")), 6);
  EXPECT_EQ(tq_mom_zcard_ext_sync(g, 0, nullptr, Obj("z")), 6);
}

TEST_F(SortedSets, ZaddMovesKnownMembersAndCountsNewOnes) {
  EXPECT_EQ(Add({{"a", 1}, {"b", 2}}), 2);
  EXPECT_EQ(Add({{"a", 3}, {"c", 0}, {"b", 2}}), 1);
  EXPECT_EQ(Range(0, -1), (Scored{{"c", 0}, {"b", 2}, {"a", 3}}));
  EXPECT_EQ(Add({{"d", 9}, {"d", -1}}), 1) << "the last one of a member wins";
  EXPECT_EQ(Range(0, 0), (Scored{{"d", -1}}));
  EXPECT_EQ(tq_mom_zcard_sync(g, 0, Obj("z")), 4);
}

TEST_F(SortedSets, ManyMovesKeepTheOrder) {
  Scored scored;
  for (int index = 0; index < 300; ++index) scored.emplace_back(std::to_string(index), index * 37 % 101);
  EXPECT_EQ(Add(scored), 300);
  for (auto& [member, score] : scored) score = -score;
  EXPECT_EQ(Add(scored), 0);
  const Scored all = Range(0, -1);
  ASSERT_EQ(all.size(), 300U);
  for (std::size_t index = 1; index < all.size(); ++index) {
    EXPECT_TRUE(all[index - 1].second < all[index].second ||
                (all[index - 1].second == all[index].second && all[index - 1].first < all[index].first));
    EXPECT_EQ(Rank(all[index].first), static_cast<int>(index));
  }
}

TEST_F(SortedSets, NanIsRefusedAndInfinityIsNot) {
  EXPECT_EQ(Add({{"low", -kInfinity}, {"high", kInfinity}, {"zero", 0}}), 3);
  EXPECT_EQ(Add({{"new", 1}, {"bad", kNan}}), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(Range(0, -1), (Scored{{"low", -kInfinity}, {"zero", 0}, {"high", kInfinity}}));
  EXPECT_EQ(tq_mom_zcount_sync(g, 0, Obj("z"), kNan, 1), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_mom_zcount_ext_sync(g, 0, nullptr, Obj("z"), 0, kNan), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_mom_zremrangebyscore_sync(g, 0, Obj("z"), kNan, kNan), TQ_MOM_INPUT_ERR);
  tq_mom_zrangebyscore_res_t* result = tq_mom_zrangebyscore_sync(g, 0, Obj("z"), kNan, 1);
  EXPECT_EQ(result->error_code, TQ_MOM_INPUT_ERR);
  EXPECT_EQ(result->count, 0U);
  EXPECT_EQ(tq_mom_zrangebyscore_res_free(result), TQ_MOM_OK);
}

TEST_F(SortedSets, MembersOfOneCallNameOneSet) {
  const Obj mine("z", "a");
  const Obj other("y", "a");
  void* members[] = {mine, other};
  double scores[] = {1, 2};
  EXPECT_EQ(tq_mom_zadd_sync(g, 0, scores, members, 2), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_mom_exists_sync(g, 0, mine), 0);
  EXPECT_EQ(tq_mom_zadd_ext_sync(g, 0, nullptr, scores, members, 1), 1);
  EXPECT_EQ(tq_mom_zrem_sync(g, 0, members, 2), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_mom_zcard_sync(g, 0, mine), 1);
  members[1] = nullptr;
  EXPECT_EQ(tq_mom_zadd_sync(g, 0, scores, members, 2), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_mom_zrem_sync(g, 0, members, 2), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_mom_zcard_sync(g, 0, mine), 1);
}

TEST_F(SortedSets, NoMembersAreNothingToDo) {
  EXPECT_EQ(tq_mom_zadd_sync(g, 0, nullptr, nullptr, 0), 0);
  EXPECT_EQ(tq_mom_zrem_sync(g, 0, nullptr, 0), 0);
  EXPECT_EQ(tq_mom_zadd_sync(g, 38, nullptr, nullptr, 0), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_mom_zrem_sync(nullptr, 0, nullptr, 0), TQ_MOM_INPUT_ERR);
  const Obj object("z", "a");
  void* members[] = {object};
  double scores[] = {1};
  EXPECT_EQ(tq_mom_zadd_sync(g, 0, scores, members, -1), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_mom_zadd_sync(g, 0, nullptr, members, 1), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_mom_zadd_sync(g, 0, scores, nullptr, 1), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_mom_zrem_sync(g, 0, members, -1), TQ_MOM_INPUT_ERR);
  EXPECT_EQ(tq_mom_zrem_sync(g, 0, nullptr, 1), TQ_MOM_INPUT_ERR);
  Restart("");
  for (const int count : {-1, 0, 1}) {
    EXPECT_EQ(tq_mom_zadd_sync(g, 0, nullptr, nullptr, count), TQ_MOM_NO_READY);
    EXPECT_EQ(tq_mom_zrem_sync(g, 38, nullptr, count), TQ_MOM_NO_READY);
  }
}

TEST_F(SortedSets, RangesByRank) {
  Add({{"a", 1}, {"b", 2}, {"c", 3}, {"d", 4}});
  EXPECT_EQ(Range(1, 2), (Scored{{"b", 2}, {"c", 3}}));
  EXPECT_EQ(Range(-2, -1), (Scored{{"c", 3}, {"d", 4}}));
  EXPECT_EQ(Range(2, 100), (Scored{{"c", 3}, {"d", 4}}));
  EXPECT_EQ(Range(3, 1), Scored());
  EXPECT_EQ(Range(4, 9), Scored());
  EXPECT_EQ(Take(tq_mom_zrange_ext_sync(g, 0, nullptr, Obj("z"), 0, 0), tq_mom_zrange_res_free), (Scored{{"a", 1}}));
}

TEST_F(SortedSets, RangesByScoreIncludeTheirBounds) {
  Add({{"a", 1}, {"b", 2}, {"bb", 2}, {"c", 3}});
  EXPECT_EQ(ByScore(1, 2), (Scored{{"a", 1}, {"b", 2}, {"bb", 2}}));
  EXPECT_EQ(ByScore(2, 2), (Scored{{"b", 2}, {"bb", 2}}));
  EXPECT_EQ(ByScore(1.5, kInfinity), (Scored{{"b", 2}, {"bb", 2}, {"c", 3}}));
  EXPECT_EQ(ByScore(3, 1), Scored());
  EXPECT_EQ(ByScore(4, 9), Scored());
  EXPECT_EQ(Take(tq_mom_zrangebyscore_ext_sync(g, 0, nullptr, Obj("z"), -kInfinity, 1), tq_mom_zrangebyscore_res_free),
            (Scored{{"a", 1}}));
  EXPECT_EQ(tq_mom_zcount_sync(g, 0, Obj("z"), 1, 2), 3);
  EXPECT_EQ(tq_mom_zcount_ext_sync(g, 0, nullptr, Obj("z"), -kInfinity, kInfinity), 4);
  EXPECT_EQ(tq_mom_zcount_sync(g, 0, Obj("z"), 2.5, 2.5), 0);
  EXPECT_EQ(tq_mom_zcount_sync(g, 0, Obj("z"), 2, 1), 0);
}

TEST_F(SortedSets, NegativeZeroIsZero) {
  Add({{"a", -0.0}, {"b", 0.0}});
  EXPECT_EQ(ByScore(0.0, 0.0).size(), 2U);
  EXPECT_EQ(ByScore(-0.0, -0.0).size(), 2U);
  EXPECT_EQ(Remove({"a", "b"}), 2);
}

TEST_F(SortedSets, RankAndScoreOfAMember) {
  Add({{"a", 5}, {"b", 2.25}});
  EXPECT_EQ(Rank("b"), 0);
  EXPECT_EQ(Rank("a"), 1);
  EXPECT_EQ(Rank("x"), TQ_MOM_ERR);
  EXPECT_EQ(tq_mom_zrank_ext_sync(g, 0, nullptr, Obj("z", "a")), 1);
  EXPECT_EQ(Score("b"), 2.25);
  EXPECT_EQ(Score("x"), std::nullopt);
  tq_mom_zscore_res_t* result = tq_mom_zscore_ext_sync(g, 0, nullptr, Obj("z", "a"));
  EXPECT_EQ(result->score, 5);
  EXPECT_EQ(result->exist, 1);
  EXPECT_EQ(tq_mom_zscore_res_free(result), TQ_MOM_OK);
}

TEST_F(SortedSets, Removals) {
  const Scored all = {{"a", 1}, {"b", 2}, {"c", 3}, {"d", 4}, {"e", 5}};
  Add(all);
  EXPECT_EQ(Remove({"b", "x", "d", "b"}), 2);
  EXPECT_EQ(Range(0, -1), (Scored{{"a", 1}, {"c", 3}, {"e", 5}}));
  Add(all);
  EXPECT_EQ(tq_mom_zremrangebyrank_sync(g, 0, Obj("z"), 1, -2), 3);
  EXPECT_EQ(Range(0, -1), (Scored{{"a", 1}, {"e", 5}}));
  EXPECT_EQ(Rank("e"), 1);
  Add(all);
  EXPECT_EQ(tq_mom_zremrangebyscore_sync(g, 0, Obj("z"), 2, 4), 3);
  EXPECT_EQ(Range(0, -1), (Scored{{"a", 1}, {"e", 5}}));
  EXPECT_EQ(tq_mom_zremrangebyscore_ext_sync(g, 0, nullptr, Obj("z"), 5, 4), 0);
  EXPECT_EQ(tq_mom_zremrangebyrank_ext_sync(g, 0, nullptr, Obj("z"), 2, 9), 0);
}

TEST_F(SortedSets, AreGoneWithTheirLastMember) {
  Add({{"a", 1}});
  EXPECT_EQ(Remove({"a"}), 1);
  EXPECT_EQ(tq_mom_exists_sync(g, 0, Obj("z")), 0);
  Add({{"a", 1}, {"b", 1}});
  EXPECT_EQ(tq_mom_zremrangebyrank_sync(g, 0, Obj("z"), 0, -1), 2);
  EXPECT_EQ(tq_mom_exists_sync(g, 0, Obj("z")), 0);
  Add({{"a", 1}, {"b", 1}});
  EXPECT_EQ(tq_mom_zremrangebyscore_sync(g, 0, Obj("z"), -kInfinity, kInfinity), 2);
  EXPECT_EQ(tq_mom_exists_sync(g, 0, Obj("z")), 0);
}

TEST_F(SortedSets, AMissingOneIsEmpty) {
  EXPECT_EQ(tq_mom_zcard_sync(g, 0, Obj("z")), 0);
  EXPECT_EQ(tq_mom_zcount_sync(g, 0, Obj("z"), 0, 1), 0);
  EXPECT_EQ(Rank("a"), TQ_MOM_ERR);
  EXPECT_EQ(Score("a"), std::nullopt);
  EXPECT_EQ(Range(0, -1), Scored());
  EXPECT_EQ(ByScore(0, 1), Scored());
  EXPECT_EQ(Remove({"a"}), 0);
  EXPECT_EQ(tq_mom_zremrangebyrank_sync(g, 0, Obj("z"), 0, -1), 0);
  EXPECT_EQ(tq_mom_zremrangebyscore_sync(g, 0, Obj("z"), 0, 1), 0);
  EXPECT_EQ(tq_mom_exists_sync(g, 0, Obj("z")), 0);
}

}  // namespace
}  // namespace hostkit
