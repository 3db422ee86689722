// What the rows of the lists refer to.
#pragma once

#include <string>

namespace tarvelin {

// The record of one row, of the kind that its page attaches.
class TRecord {
 public:
  virtual ~TRecord() = default;
};

// Where an add-on or a browser setting lives.
struct TIESec : TRecord {
  std::wstring FilePath;      // the module as registered, unexpanded; empty without one
  std::wstring RegLocation;   // of a key, on the settings page of a value
  std::wstring DefaultValue;  // what restoring a setting writes; empty on add-on rows
};

}  // namespace tarvelin
