// Runs a part of a log. A log must not disturb the code that it watches, so what fails there is lost.
#pragma once

template <class Body>
void Quietly(Body body) noexcept {
  try {
    body();
  } catch (...) {  // the callbacks of the main module may raise anything
    return;
  }
}
