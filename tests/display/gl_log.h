// The functions of OpenGL and GLU that the library calls, in place of the system's: each call is noted, and the state
// that can be read back is kept.
#pragma once

#include <set>
#include <string>

namespace kvtest {

struct FakeGL {
  std::string log;                                 // "Begin 1; V 1 2 3; End; "
  std::set<unsigned> enabled;                      // such as GL_LIGHTING
  float color[4] = {0.125F, 0.25F, 0.375F, 1.0F};  // the current one
  bool depthWrites = true;
  unsigned nextList = 7;  // what glGenLists returns; 0: none left
  unsigned error = 0;     // what glGetError returns after glGenLists

  std::string TakeLog();
};

// The state of all calls. A test sets it to FakeGL() first.
FakeGL& GL();

}  // namespace kvtest
