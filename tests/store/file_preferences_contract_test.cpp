// SPDX-License-Identifier: MIT
#include "host/linux/background_preferences.h"
#include "host/linux/file_preferences.h"
#include "preferences_contract.h"
#include "store_files.h"

namespace quellar::tests {

struct FilePreferencesMaker {
  TemporaryFolder folder;
  host::linux::FilePreferences store{host::linux::DeviceRoot(folder.path() / "root")};
  platform::Preferences& preferences() { return store; }
};

/// Writes with one store and reads with another, as two processes do.
struct TwoFilePreferencesMaker {
  class Pair : public platform::Preferences {
   public:
    explicit Pair(const std::filesystem::path& root)
        : writer_(host::linux::DeviceRoot(root)), reader_(host::linux::DeviceRoot(root)) {}
    std::optional<platform::Value> copyAppValue(std::string_view key, std::string_view domain) override {
      return reader_.copyAppValue(key, domain);
    }
    [[nodiscard]] bool wasRead(std::string_view domain) const override { return reader_.wasRead(domain); }
    void setAppValue(std::string_view key, const std::optional<platform::Value>& value,
                     std::string_view domain) override {
      writer_.setAppValue(key, value, domain);
    }
    void appSynchronize(std::string_view domain) override { writer_.appSynchronize(domain); }

   private:
    host::linux::FilePreferences writer_;
    host::linux::FilePreferences reader_;
  };

  TemporaryFolder folder;
  Pair store{folder.path() / "root"};
  platform::Preferences& preferences() { return store; }
};

struct BackgroundPreferencesMaker {
  TemporaryFolder folder;
  host::linux::BackgroundPreferences store{host::linux::DeviceRoot(folder.path() / "root"), {}, {}};
  platform::Preferences& preferences() { return store; }
};

INSTANTIATE_TYPED_TEST_SUITE_P(BackgroundPreferences, PreferencesContract, BackgroundPreferencesMaker);
INSTANTIATE_TYPED_TEST_SUITE_P(FilePreferences, PreferencesContract, FilePreferencesMaker);
INSTANTIATE_TYPED_TEST_SUITE_P(TwoFilePreferences, PreferencesContract, TwoFilePreferencesMaker);

}  // namespace quellar::tests
