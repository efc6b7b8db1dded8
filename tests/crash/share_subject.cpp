#include <algorithm>

#include "tests/crash/trial.h"

namespace quoll::crash {

namespace {

class Freely final : public Steps {
 public:
  explicit Freely(const World& world) : world_(world) {}

  Step at(const Call& call) override { return step_of_world(world_, call); }
  [[nodiscard]] bool is_done() const override { return world_.is_modern; }

 private:
  World world_;
};

void check_temporary(const Scene& scene, Findings& findings) {
  for (const std::string& name : names_in(scene.temporary())) {
    findings.push_back({About::kLeftOver, "the temporary folder holds " + name});
  }
}

class ShareSubject final : public Subject {
 public:
  ShareSubject() : staged_(scene_.learn()) {}
  explicit ShareSubject(const Staged& staged) : staged_(staged) { scene_.know(staged); }

  [[nodiscard]] std::unique_ptr<Subject> another() const override {
    return std::make_unique<ShareSubject>(staged_);
  }
  void prepare(bool anew) override {
    scene_.prepare(anew);
    before_ = scene_.untouchable();
  }
  [[nodiscard]] std::vector<std::string> command() const override {
    return scene_.command(Which::kFirst);
  }
  [[nodiscard]] const test::Environment& environment() const override {
    return scene_.environment();
  }
  void entered(const Call& /*call*/) override {}

  void check(const Trial& trial, const Harmed& harmed, unsigned seconds, Result& result) override {
    Findings& findings = result.findings;
    if (trial.harm != Harm::kKillAll && !harmed.end.is_hung) {
      if (!check_end(trial, harmed, result)) {
        check_told(scene_, harmed.end, harmed.was_telling, result.is_unsure, findings);
      }
      check_temporary(scene_, findings);
    }
    check_disk(scene_, before_, findings);
    const bool is_locked = std::any_of(findings.begin(), findings.end(), [](const Finding& one) {
      return one.about == About::kLock;
    });
    if (!is_locked) {  // or the next share might wait for ever
      share_again(trial, seconds, findings);
    }
  }

 private:
  void share_again(const Trial& trial, unsigned seconds, Findings& findings) {
    scene_.prepare(false);
    Freely undisturbed(trial.world);
    const SteppedEnd end =
        run_stepped(scene_.command(Which::kNext), scene_.environment(), undisturbed, seconds);
    check_next(scene_, end, findings);
    check_temporary(scene_, findings);
    check_disk(scene_, before_, findings);
  }

  Scene scene_;
  Staged staged_;
  Snapshot before_;
};

}  // namespace

std::unique_ptr<Subject> make_share() {
  return std::make_unique<ShareSubject>();
}

}  // namespace quoll::crash
