// Shared fixture of the life cycle tests: a temporary folder, a private TARNO.def,
// a scripted user interface, recording hooks and helpers to make project files.
#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "store/database.h"
#include "store/lifecycle.h"
#include "store/schema.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace tarno::test {

// Hooks that record the names of the calls made.
class RecordingHooks : public SessionHooks {
 public:
  std::vector<std::string> calls;
  bool menusOn = false;
  std::string caption;
  void TurnOffMenus() override { calls.push_back("TurnOffMenus"); menusOn = false; }
  void TurnOnMenus() override { calls.push_back("TurnOnMenus"); menusOn = true; }
  void SetUpToolbar() override { calls.push_back("SetUpToolbar"); }
  void SetCaption(const std::string& c) override { caption = c; }
  void SetUpLayers() override { calls.push_back("SetUpLayers"); }
  void ZoomActions(bool first) override { calls.push_back(first ? "ZoomActions(first)" : "ZoomActions"); }
  void CheckGradient(ProjectSession&) override { calls.push_back("CheckGradient"); }
  void DBIntegrity(ProjectSession&) override { calls.push_back("DBIntegrity"); }
  void UnitsChanged() override { calls.push_back("UnitsChanged"); }
  int Count(const std::string& name) const {
    int n = 0;
    for (const auto& c : calls) n += c == name;
    return n;
  }
};

class LifecycleTest : public ::testing::Test {
 protected:
  void SetUp() override {
    temp_.emplace("tarno-life");
    dir_ = temp_->Path();
    std::filesystem::create_directories(dir_ / "config");
    ::setenv("TARNO_CONFIG_DIR", (dir_ / "config").c_str(), 1);
    session_ = std::make_unique<ProjectSession>(ui_, hooks_, (dir_ / "app").string());
    session_->SetBaseNameSource([] { return std::string("c25a0"); });
  }
  void TearDown() override {
    session_.reset();
    temp_.reset();
    ::unsetenv("TARNO_CONFIG_DIR");
  }

  std::string P(const std::string& name) const { return (dir_ / name).string(); }
  std::string Dir() const { return dir_.string(); }

  // A project file whose solver directory is the temporary folder, so that opening
  // it asks nothing.
  std::string MakeProject(const std::string& name, bool meters = true) {
    const std::string path = P(name);
    DBNewDatabase(path, "Test project", meters, meters);
    Exec(path, "update Project set TARNOBasePath = '" + Dir() + "';");
    return path;
  }

  static void Exec(const std::string& path, const std::string& sql) {
    Database db = Database::Open(path);
    db.ExecuteRaw(sql);
  }
  static std::string Text(const std::string& path, const std::string& sql) {
    Database db = Database::Open(path);
    Statement st = db.PrepareRaw(sql);
    return st.Step() ? st.GetText(0) : std::string("<no row>");
  }
  static long long Int(const std::string& path, const std::string& sql) {
    Database db = Database::Open(path);
    Statement st = db.PrepareRaw(sql);
    return st.Step() ? st.GetInt64(0) : -999999;
  }
  static std::string Bytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }
  void WriteFile(const std::string& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary);
    out << bytes;
  }

  std::optional<TempDir> temp_;
  std::filesystem::path dir_;
  ScriptedUserInterface ui_;
  RecordingHooks hooks_;
  std::unique_ptr<ProjectSession> session_;
};

}  // namespace tarno::test
