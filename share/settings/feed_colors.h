// Colours of toolpaths by their feed rate: a table of thresholds with a colour each, one table for each kind of
// process. Each threshold stands for the feeds up to and including itself.
//
//   QFMillFeedColorsSettings table;
//   table.RestoreValuesFromRegistry();
//   const unsigned long color = table.GetColorForFeed(150.0);  // 0x00BBGGRR, or kNoFeedColor
//
// A row is a QFColorValue of the key's list: its name is the threshold with two decimals, which is what the registry
// holds. After a restore the rows stand in ascending order; AddValue puts a row ahead of them all, and a walk follows
// that order, sorted or not: that is required. Items of other kinds, which only a module or an archive can bring in,
// are passed over.
//
// Rows that are taken out of the table (by RemoveAll and by each restore) are not deleted, as required: they stay the
// table's, out of its reach, and go with it. A table is used by one thread at a time, also for reading.
#pragma once

#include <vector>

#include "share/settings/settings_key.h"

// What GetColorForFeed gives for a feed without a colour.
inline constexpr unsigned long kNoFeedColor = 0xFFFFFFFF;

class KVSHARE_API QFFeedColorsSettings : public QFSettingsKey {
  DECLARE_SERIAL(QFFeedColorsSettings)

 public:
  // Without rows. The default constructor leaves name and path empty, which stands for the hive itself: such a table
  // is not for saving.
  QFFeedColorsSettings();
  QFFeedColorsSettings(const CString& name, const CString& path);

  // Puts a row ahead of the others. The threshold is rounded to two decimals; a second row of the same one is not
  // prevented, and of such rows the registry keeps the one that stands last.
  void AddValue(double feed, unsigned long color);

  // Walk through the rows: 1 and the row, or 0 behind the last, with both variables untouched. There is one cursor; it
  // ends when rows are taken out, and GetColorForFeed moves it.
  int GetFirstValue(double& feed, unsigned long& color);
  int GetNextValue(double& feed, unsigned long& color);

  // Empties the table; 1.
  int RemoveAll();

  // The colour of the first row in list order whose threshold isn't below the feed (within RESABS); kNoFeedColor if
  // there is none, and for every feed while "UseFeedColors" of the active document's "Colors" is 0. Without such
  // settings the table applies. Takes the time of a binary search, in any order of the rows, after one walk for each
  // change of them.
  unsigned long GetColorForFeed(double feed);

  // Replaces all that the registry key holds by the rows, at once: whatever ends the process meanwhile, the registry
  // has the old table or the new one. 1 if all were written.
  int SaveValuesToRegistry() override;
  // Takes the rows from the registry, in ascending order, up to the first value that is longer than a colour. Unlike
  // other settings it creates the key, and its result is always 0, also for the tree that it stands in: both are
  // required. An empty key gives one row, up to 100000, in a random colour by the C runtime's rand().
  int RestoreValuesFromRegistry() override;

  // As of every key: an archive's rows are kept only where the table that loads them has a row of the same name.
  void Serialize(CArchive& ar) override;
  void DumpData(FILE* file) override;

 private:
  // A row in list order, with the highest threshold up to here, for a binary search.
  struct Step {
    double reach;
    const QFColorValue* row;
    POSITION next;
  };

  QFColorValue* TakeRow(POSITION& position) const;
  void CollectSteps();

  POSITION m_Pos = nullptr;
  std::vector<Step> m_Steps;
  ULONGLONG m_nStepsVersion = ~ULONGLONG{0};  // GetListVersion() when they were collected
};

// The three tables, each with its name and path.
class KVSHARE_API QFTurnFeedColorsSettings : public QFFeedColorsSettings {
  DECLARE_SERIAL(QFTurnFeedColorsSettings)

 public:
  QFTurnFeedColorsSettings();
  void DumpData(FILE* file) override;
};

class KVSHARE_API QFMillFeedColorsSettings : public QFFeedColorsSettings {
  DECLARE_SERIAL(QFMillFeedColorsSettings)

 public:
  QFMillFeedColorsSettings();
  void DumpData(FILE* file) override;
};

class KVSHARE_API QFEdmFeedColorsSettings : public QFFeedColorsSettings {
  DECLARE_SERIAL(QFEdmFeedColorsSettings)

 public:
  QFEdmFeedColorsSettings();
  void DumpData(FILE* file) override;
};
