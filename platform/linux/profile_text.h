// The content of one profile file: its values, found through an index, and the file's bytes after a change.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kvprofile {

// The largest file that is read. The index needs up to about five times the bytes of the file.
inline constexpr std::size_t kMostBytes = std::size_t(32) << 20;

// Immutable, so any number of threads may use it. Names and values are passed as they are compared and written; lists
// have a NUL after each entry.
class Profile {
 public:
  // Accepts at most kMostBytes. Null if the bytes are in an encoding that is not read: UTF-16 without the mark FF FE,
  // or UTF-32. Bytes without a mark are UTF-8 or, if they are not, windows-1252.
  static std::shared_ptr<const Profile> FromBytes(std::string bytes);
  virtual ~Profile() = default;

  virtual bool HasBytes(std::string_view bytes) const = 0;
  virtual std::size_t Size() const = 0;
  // Returns whether the text can be written in the file's encoding. Required of each text that is written.
  virtual bool CanHold(std::u16string_view text) const = 0;

  // Return false if there is no such section or key.
  virtual bool FindValue(std::u16string_view section, std::u16string_view key, std::u16string& value) const = 0;
  virtual std::u16string SectionNames() const = 0;
  virtual bool ListKeys(std::u16string_view section, std::u16string& list) const = 0;
  virtual bool ListLines(std::u16string_view section, std::u16string& list) const = 0;

  // The bytes of the whole file after a change; no value if there is nothing to remove.
  virtual std::string WithValue(std::u16string_view section, std::u16string_view key,
                                std::u16string_view value) const = 0;
  virtual std::optional<std::string> WithoutKey(std::u16string_view section, std::u16string_view key) const = 0;
  virtual std::optional<std::string> WithoutSection(std::u16string_view section) const = 0;
  // `lines` is a list with a NUL after each entry.
  virtual std::string WithLines(std::u16string_view section, std::u16string_view lines) const = 0;
};

}  // namespace kvprofile
