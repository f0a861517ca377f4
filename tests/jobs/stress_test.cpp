// Jobs by the thousand: eight threads request jobs, and at random terminate, suspend and resume, delete, wait, and end
// documents with all their nodes. KV_JOBS_STRESS=1 makes ten runs of 10,000 requests; otherwise three runs of 1,000.
#include <array>
#include <cstdlib>
#include <random>
#include <shared_mutex>
#include <thread>

#include "tests/jobs/job_support.h"
#include "tests/scratch.h"

namespace {

using namespace kvtest;

constexpr int kThreads = 8;
constexpr int kDocuments = 4;
constexpr int kNodes = 12;
constexpr int kLinks = 16;

// Counts of events; every job's thread adds to them.
struct Tally {
  std::atomic<int> asked = 0, refused = 0, direct = 0, threads = 0, begun = 0, entered = 0, returned = 0;
};

class StressNode : public QFObject {
 public:
  StressNode(Tally& tally, unsigned seed) : tally_(tally), random_(seed) {}
  ~StressNode() override { EXPECT_EQ(inside_, 0) << "deleted under its command"; }

  QFeThreadStatus HandleCommand(QFeCommandType type, unsigned, void*&) override {
    if (type != eCommandRun) return eThreadDone;
    ++inside_;
    ++tally_.entered;
    const unsigned dice = random_.fetch_add(7919) % 100;
    for (unsigned step = 0; step < dice % 20; ++step) {
      if (IsUserJobCancelled()) break;
      QFProgressCallback(step);
      std::this_thread::yield();
    }
    ++tally_.returned;
    --inside_;
    if (dice < 10) throw dice;
    constexpr std::array kResults = {eThreadDone, eThreadDone, eThreadNotHandled, eThreadDoneKeepData,
                                     eThreadNotStarted};
    return kResults[dice % kResults.size()];
  }

 private:
  Tally& tally_;
  std::atomic<unsigned> random_;
  std::atomic<int> inside_ = 0;
};

struct Document {
  QFObject object;
  std::vector<std::unique_ptr<StressNode>> nodes;
};

class StressManager : public TestManager {
 public:
  explicit StressManager(Tally& tally) : tally_(tally) {
    onStart = [this](QFThreadData*) { ++tally_.threads; };
  }

 protected:
  int OnBeginThread(QFThreadData*) override {
    ++tally_.begun;
    return 1;
  }

 private:
  Tally& tally_;
};

class Stress : public JobTest {
 protected:
  void Run(int requests, unsigned seed, bool parents, bool keep) {
    QFThreadBaseMgr::m_pInstance = &jobs_;
    jobs_.clock = &clock;
    clock.yields = 40;
    Set(_T("ThreadDel"), !keep);
    for (std::size_t i = 0; i < links_.size(); ++i) links_[i] = MakeLink(1 + i / 4, 1 + i / 2, unsigned(i % 3));
    for (Document& document : documents_) EndDocument(document, seed);
    std::vector<std::thread> askers;
    for (int asker = 0; asker < kThreads; ++asker) {
      askers.emplace_back([&, asker] {
        std::mt19937 random(seed + unsigned(asker));
        for (int i = 0; i < requests / kThreads; ++i) {
          Ask(random, parents);
          Disturb(random);
        }
      });
    }
    for (std::thread& asker : askers) asker.join();
    jobs_.WaitForAllThreadsToBeDone();
    for (Document& document : documents_) EndDocument(document, seed);
    clock.AwaitThreads();

    jobs_.DeleteAllDoneThreads();
    EXPECT_EQ(jobs_.Count(), 0) << "every record went with its job or its node";
    EXPECT_EQ(tally_.asked, requests);
    EXPECT_EQ(tally_.asked, tally_.refused + tally_.direct + tally_.threads);
    EXPECT_LE(tally_.begun, tally_.threads);
    EXPECT_LE(tally_.entered, tally_.begun + tally_.direct);
    EXPECT_EQ(tally_.entered, tally_.returned);
    EXPECT_GT(tally_.entered, requests / 20);
    EXPECT_TRUE(parents || jobs_.GetNumThreadsRunningOrWaiting(nullptr) == 0);
  }

 private:
  void Ask(std::mt19937& random, bool parents) {
    Document& document = documents_[random() % kDocuments];
    const std::shared_lock guard(nodes_);
    t_document = &document.object;
    const auto type = parents && random() % 8 == 0 ? eThreadTypeChild : kPlain;
    const auto endType = parents && random() % 8 == 0 ? eThreadEndWaitForChild : kEnds;
    void* param = random() % 4 == 0 ? nullptr : &links_[random() % kLinks];
    const int result = document.nodes[random() % kNodes]->RunCommand(1 + random() % 3, param, type, endType);
    ++tally_.asked;
    tally_.refused += result == 0;
    tally_.direct += result == 1;
  }

  void WithRandomRecord(std::mt19937& random, const std::function<void(QFThreadData*)>& use) {
    const QFAutoCriticalSection section(jobs_.m_CriticalSection);
    CObList all;
    jobs_.GetAllThreads(all);
    if (!all.IsEmpty()) use(static_cast<QFThreadData*>(all.GetAt(all.FindIndex(LONGLONG(random() % all.GetCount())))));
  }

  // No two records of one request exist at the same time.
  void LookForTwins() {
    const QFAutoCriticalSection section(jobs_.m_CriticalSection);
    CObList all;
    jobs_.GetAllThreads(all);
    std::vector<std::tuple<QFObject*, unsigned, void*>> requests;
    for (POSITION at = all.GetHeadPosition(); at;) {
      auto* data = static_cast<QFThreadData*>(all.GetNext(at));
      if (void* param = data->GetCommandParameter())
        requests.emplace_back(data->GetCallingObject(), data->GetCommandContextID(), param);
    }
    std::sort(requests.begin(), requests.end());
    EXPECT_EQ(std::adjacent_find(requests.begin(), requests.end()), requests.end());
  }

  void Disturb(std::mt19937& random) {
    if (random() % 128 == 0) return EndDocument(documents_[random() % kDocuments], random());
    const std::shared_lock guard(nodes_);
    void* const target = links_[random() % kLinks].GetIdentifierA();
    switch (random() % 24) {
      case 0: jobs_.TerminateIfRunning(target); break;
      case 1: jobs_.DestructThread(target); break;
      case 2: jobs_.TerminateLastCreated(); break;
      case 3: jobs_.DeleteAllDoneThreads(); break;
      case 4: WithRandomRecord(random, [](QFThreadData* data) { data->TerminateThread(); }); break;
      case 5: WithRandomRecord(random, [&](QFThreadData* data) { jobs_.DestroyThreadData(data); }); break;
      case 6:
      case 7: {
        QFThreadData* suspended = nullptr;
        WithRandomRecord(random, [&](QFThreadData* data) { (suspended = data)->SuspendThread(); });
        std::this_thread::yield();
        const QFAutoCriticalSection section(jobs_.m_CriticalSection);
        if (jobs_.GetHaveThreadData(suspended)) suspended->ResumeThread();
        break;
      }
      case 8: {
        void* handles[3];
        jobs_.GetThreadsNotDone(handles, 3);
        jobs_.AnyThreadsRunning();
        QFThreadBaseMgr::IsAnyThreadsRunningOrWaiting(&documents_[0].object);
        break;
      }
      case 9: LookForTwins(); break;
      case 10: jobs_.SetCanRunSeparateProcess(random() % 8 != 0); break;
      case 11: jobs_.TerminateAllThreadsInThisDoc(&documents_[random() % kDocuments].object); break;
      default: break;
    }
  }

  void EndDocument(Document& document, unsigned seed) {
    const std::unique_lock guard(nodes_);
    jobs_.TerminateAllThreadsInThisDoc(&document.object);
    EXPECT_EQ(QFThreadBaseMgr::IsAnyThreadsRunningOrWaiting(&document.object), 0);
    clock.AwaitThreads();
    document.nodes.clear();
    for (unsigned i = 0; i < kNodes; ++i) document.nodes.push_back(std::make_unique<StressNode>(tally_, seed + i));
  }

  Tally tally_;
  StressManager jobs_{tally_};
  // Shared while a thread uses nodes, exclusive while one deletes them. Jobs use nodes without it.
  std::shared_mutex nodes_;
  std::array<Document, kDocuments> documents_;
  std::array<QFThreadDataLink, kLinks> links_;
};

class StressRuns : public Stress, public testing::WithParamInterface<int> {};

TEST_P(StressRuns, EndWithEverythingAccountedFor) {
  const bool whole = std::getenv("KV_JOBS_STRESS") != nullptr;
  if (!whole && GetParam() >= 3) GTEST_SKIP() << "with KV_JOBS_STRESS alone";
  Run(whole ? 10'000 : 1'000, PrintedSeed(), /*parents=*/GetParam() % 3 > 0, /*keep=*/GetParam() % 3 == 2);
}

INSTANTIATE_TEST_SUITE_P(Jobs, StressRuns, testing::Range(0, 10));

}  // namespace
