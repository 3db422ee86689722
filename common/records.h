// What the rows of the lists refer to.
#pragma once

#include <string>
#include <vector>

namespace tarvelin {

// The record of one row, of the kind that its page attaches.
class TRecord {
 public:
  virtual ~TRecord() = default;
  // What a copy of the row says beside the texts of its columns.
  [[nodiscard]] virtual std::vector<std::wstring> Details() const { return {}; }
};

// Where an add-on or a browser setting lives.
struct TIESec : TRecord {
  std::wstring FilePath;      // the module as registered, unexpanded; empty without one
  std::wstring RegLocation;   // of a key, on the settings page of a value
  std::wstring DefaultValue;  // what restoring a setting writes; empty on add-on rows

  [[nodiscard]] std::vector<std::wstring> Details() const override {
    return {FilePath, RegLocation, DefaultValue};
  }
};

}  // namespace tarvelin
