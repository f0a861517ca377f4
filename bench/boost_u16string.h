// Adds std::u16string to Boost.Serialization. The code units are written as one block, like those of std::wstring.
#pragma once

#include <boost/serialization/level.hpp>
#include <boost/serialization/split_free.hpp>
#include <boost/serialization/tracking.hpp>
#include <cstdint>
#include <string>

namespace boost::serialization {
template <class Archive>
void save(Archive& ar, const std::u16string& text, unsigned) {
  const std::uint32_t size = std::uint32_t(text.size());
  ar << size;
  ar.save_binary(text.data(), text.size() * sizeof(char16_t));
}
template <class Archive>
void load(Archive& ar, std::u16string& text, unsigned) {
  std::uint32_t size = 0;
  ar >> size;
  text.resize(size);
  ar.load_binary(text.data(), text.size() * sizeof(char16_t));
}
template <class Archive>
void serialize(Archive& ar, std::u16string& text, unsigned version) {
  split_free(ar, text, version);
}
}  // namespace boost::serialization
BOOST_CLASS_IMPLEMENTATION(std::u16string, boost::serialization::object_serializable)
BOOST_CLASS_TRACKING(std::u16string, boost::serialization::track_never)
