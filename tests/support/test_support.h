// Helpers shared by the test binaries.
#pragma once

#include <string>
#include <vector>

namespace tessmeta::test {

// A fresh directory under the system temp folder, removed with everything in it
// when the object goes away.
class TempDir {
  public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& Path() const { return m_path; }
    std::string File(const std::string& name) const { return m_path + "/" + name; }

  private:
    std::string m_path;
};

// Installs capturing message-box and trace hooks for its lifetime.
class CapturedOutput {
  public:
    CapturedOutput();
    ~CapturedOutput();
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;

    const std::vector<std::string>& Traces() const;
    const std::vector<std::string>& MessageBoxes() const;
    void Clear();
};

}  // namespace tessmeta::test
