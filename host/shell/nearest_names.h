// The names that a user may have meant by a name that does not exist.
#pragma once

#include <string>
#include <vector>

namespace kestrova {

// The text with small ASCII letters, for names that compare in any case.
std::string LowerAscii(std::string text);

// Up to three of the names, nearest first and separated by commas; empty if no name is near. A name is near if it
// begins with `wanted`, differs from a short `wanted` by one typing error, or shares half the letters of a longer one.
// ASCII letters compare in any case. The names may be repeated and in any order.
std::string NearestNames(std::vector<std::string> names, const std::string& wanted);

// "; the nearest: a, b", or "; " and the remedy if no name is near. For the end of a message.
std::string NearestOr(std::vector<std::string> names, const std::string& wanted, const std::string& remedy);

}  // namespace kestrova
