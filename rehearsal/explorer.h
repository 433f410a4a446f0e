// Goes every road through a package: at each decision the process forks, one process for each answer that can
// matter, and the roads are gone one behind the other (or beside each other, where there are cores). A state
// that another road has been in is not left again: the road ends there.
//
// What tells states apart is what can still matter: the place in the script, the tags that something behind
// it tests, the board's files, and what the commands so far have prepared. Two roads in the same state end
// with the same board.
#pragma once

#include <sys/types.h>

#include <vector>

#include "rehearsal/performance.h"
#include "rehearsal/results.h"
#include "rehearsal/shared_state.h"

namespace varnok::rehearsal {

/// A state that was left by one of its answers.
struct Step {
  std::uint64_t state = 0;
  std::uint32_t alternative = 0;
  std::string text{};
  bool isInvalid = false;
};

/// What a process of the exploration leaves.
enum class TraceKind : std::uint8_t {
  State,  ///< a state was seen for the first time: `question`, `state`
  Leaf,   ///< a road went to its end: `path`, `outcome`
  Death,  ///< a process that began with `path` came to no end of its own: `outcome`
  Join,   ///< a road came to a state that had been seen: `path`, `state`, and what the outcome has so far
};
struct Trace {
  TraceKind kind = TraceKind::State;
  std::uint64_t state = 0;
  Question question{};  ///< without a line where nothing is asked: all commands have been processed
  std::vector<std::string> alternatives{};  ///< the process that saw the state takes the first of them itself
  std::vector<Step> path{};
  Outcome outcome{};          ///< without traffic; without images where an earlier leaf has the same
  std::uint64_t images = 0;   ///< a hash
  std::uint64_t traffic = 0;  ///< the same
};

template <class Archive>
void Transfer(Archive& archive, Step& step) {
  archive(step.state, step.alternative, step.text, step.isInvalid);
}
template <class Archive>
void Transfer(Archive& archive, Trace& trace) {
  archive(trace.kind, trace.state, trace.question, trace.alternatives, trace.path, trace.outcome,
          trace.images, trace.traffic);
}

class Explorer : public Answerer {
 public:
  /// With `isProbing` each probe's other outcomes are gone too, not only the board's own.
  Explorer(Stage& stage, SharedState& shared, Results& results, bool isProbing)
      : stage_(stage), shared_(shared), results_(results), isProbing_(isProbing) {}

  /// Goes all roads from here, in this process and those that it forks. Ends the process.
  [[noreturn]] void Go();

  std::optional<std::string> Answer(Performance& run, const Inquiry& inquiry) override;
  ProbeEnd ChooseProbeEnd(Performance& run, const Question& question) override;
  void CannotFail(Performance& run, const Question& question) override;
  void Learn(Performance& run, const Given& given) override;
  void Commit(Performance& run) override;

 private:
  /// A process that goes on with what this one leaves at a decision.
  struct Child {
    pid_t process;      ///< 0: it has ended
    Step first;         ///< that it takes
    std::size_t depth;  ///< steps in front of it
    bool isAwake = false;
  };

  std::uint64_t StateAt(Performance& run, const Question& question);
  std::uint64_t ImagesHash();
  /// Ends the process in a state that is known. Else forks one process that is to go on with the rest of the
  /// alternatives when this one has come to its end. The index of the alternative that the process takes.
  std::size_t Choose(Performance& run, const Question& question,
                     const std::vector<std::string>& alternatives);
  void Enter(Performance& run, const Question& question, const std::vector<std::string>& alternatives);
  bool ForkRest(const Step& rest);
  void AwaitTurn(pid_t parent);
  static void Wake(Child& child, int signal);
  void Reap(const Child& child);
  void LeaveLeaf(Outcome& outcome);
  [[noreturn]] void EndProcess();

  Stage& stage_;
  SharedState& shared_;
  Results& results_;
  bool isProbing_;
  std::vector<Step> path_;
  std::uint64_t state_ = 0;
  std::vector<Child> children_;
  bool hasCore_ = false;  ///< to give back at the end
  std::uint64_t imagesHash_ = 0;
  std::optional<std::uint64_t> imagesChanges_;  ///< when it was made
};

/// The answers to a question that can matter; the first is one that the program takes.
std::vector<std::string> AlternativesOf(const Inquiry& inquiry);

}  // namespace varnok::rehearsal
