#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/integration/private_bus.h"

namespace quoll::test {

/// A bus and a home in which the doctor looks.
class Doctor : public testing::Test {
 protected:
  [[nodiscard]] std::string container() const { return bus_.path("containers/K7Q2M9XT4B.quoll"); }
  void install_receiver() const {
    bus_.add_service("it.vorlent.quoll2", QUOLL_COMPOSE " --service --idle 1");
  }
  [[nodiscard]] Ended doctor(std::vector<std::string> options = {},
                             const Environment& more = {}) const {
    Environment environment = bus_.environment();
    environment["QUOLL_IMAGE_HELPER"] = QUOLL_IMAGE_HELPER;
    for (const auto& [name, value] : more) {
      environment[name] = value;
    }
    options.insert(options.begin(), {QUOLLCTL, "doctor"});
    return run(options, environment);
  }
  /// What it says of one step: its state, then what was found.
  [[nodiscard]] static std::string said(const Ended& ended, const std::string& step) {
    const nlohmann::json one = about(ended, step);
    return one.value("state", "nothing") + ": " +
           one.value("found", "in " + ended.output + ended.errors);
  }
  /// What to do about it.
  [[nodiscard]] static std::string advised(const Ended& ended, const std::string& step) {
    return about(ended, step).value("advice", "");
  }
  [[nodiscard]] static nlohmann::json about(const Ended& ended, const std::string& step) {
    const nlohmann::json answer = nlohmann::json::parse(ended.output, nullptr, false);
    for (const nlohmann::json& one : answer.value("steps", nlohmann::json::array())) {
      if (one["step"] == step) {
        return one;
      }
    }
    return nlohmann::json::object();
  }
  [[nodiscard]] bool is_receiver_running() const {
    return run({"dbus-send", "--session", "--print-reply=literal", "--dest=org.freedesktop.DBus",
                "/org/freedesktop/DBus", "org.freedesktop.DBus.NameHasOwner",
                "string:it.vorlent.quoll2"},
               bus_.environment())
               .output.find("true") != std::string::npos;
  }
  /// Puts a script of this name into a folder of programs.
  void make_program(const std::string& name, const std::string& script = "true") const {
    std::filesystem::create_directories(bus_.path("programs"));
    const std::string path = bus_.path("programs/" + name);
    std::ofstream(path) << "#!/bin/sh\n" << script << '\n';
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
  }

  PrivateBus bus_;
};

}  // namespace quoll::test
