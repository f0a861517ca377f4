// The text of one profile file: what its lines say, found through an index, and the file's bytes after a change.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kvprofile {

// A larger file is not taken in. The index takes up to some eight times the bytes of the file.
inline constexpr std::size_t kMostBytes = std::size_t(32) << 20;

// Never changes, so any number of threads may use it. Names and values are handed in as they shall be compared and
// written; lists come with a NUL behind each entry.
class Profile {
 public:
  // Takes any bytes, at most kMostBytes of them.
  static std::shared_ptr<const Profile> FromBytes(std::string bytes);
  virtual ~Profile() = default;

  virtual bool HasBytes(std::string_view bytes) const = 0;
  virtual std::size_t Size() const = 0;

  // False if there is no such section or key.
  virtual bool FindValue(std::u16string_view section, std::u16string_view key, std::u16string& value) const = 0;
  virtual std::u16string SectionNames() const = 0;
  virtual bool ListKeys(std::u16string_view section, std::u16string& list) const = 0;
  virtual bool ListLines(std::u16string_view section, std::u16string& list) const = 0;

  // The bytes of the whole file after a change; nothing if there is nothing to remove.
  virtual std::string WithValue(std::u16string_view section, std::u16string_view key,
                                std::u16string_view value) const = 0;
  virtual std::optional<std::string> WithoutKey(std::u16string_view section, std::u16string_view key) const = 0;
  virtual std::optional<std::string> WithoutSection(std::u16string_view section) const = 0;
  // lines is a list as the calls take it, with a NUL behind each entry.
  virtual std::string WithLines(std::u16string_view section, std::u16string_view lines) const = 0;
};

}  // namespace kvprofile
