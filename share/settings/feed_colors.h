// Colours of toolpaths by feed rate: a table of thresholds, each with a colour; one table per kind of process. A
// threshold covers the feeds up to and including itself.
//
//   QFMillFeedColorsSettings table;
//   table.RestoreValuesFromRegistry();
//   const unsigned long color = table.GetColorForFeed(150.0);  // 0x00BBGGRR, or kNoFeedColor
//
// A row is a QFColorValue in the key's list. Its name is the threshold with two decimals; the registry stores this
// name. A restore sorts the rows in ascending order. AddValue puts a row before all others, and walks and searches
// follow the list order even if it is not sorted, which is kept for existing modules. Walks and searches skip items of
// other classes, which only a module or an archive can add.
//
// RemoveAll and each restore take rows out of the table without deleting them, because existing modules may still read
// them: the table deletes them in its destructor. One thread at a time may use a table, also for reading.
#pragma once

#include <vector>

#include "share/settings/settings_key.h"

// The result of GetColorForFeed for a feed without a colour.
inline constexpr unsigned long kNoFeedColor = 0xFFFFFFFF;

class KVSHARE_API QFFeedColorsSettings : public QFSettingsKey {
  DECLARE_SERIAL(QFFeedColorsSettings)

 public:
  // Builds a table without rows. The default constructor leaves name and path empty. An empty path means the hive
  // itself: don't save such a table.
  QFFeedColorsSettings();
  QFFeedColorsSettings(const CString& name, const CString& path);

  // Puts a row before the others. The threshold is rounded to two decimals. Two rows may have the same threshold; the
  // registry then keeps the later one in list order.
  void AddValue(double feed, unsigned long color);

  // Walk the rows in list order. 1 and the row; 0 after the last row, with both variables unchanged. The table has one
  // cursor: GetColorForFeed moves it, and the walk ends when rows are taken out.
  int GetFirstValue(double& feed, unsigned long& color);
  int GetNextValue(double& feed, unsigned long& color);

  // Takes all rows out. Always 1.
  int RemoveAll();

  // The colour of the first row in list order whose threshold isn't below the feed, within RESABS. kNoFeedColor if
  // there is no such row, and for every feed while the group "Colors" of the active document's settings lacks
  // "UseFeedColors" or has it 0. Without such a group the table applies. A binary search in any order of the rows; the
  // first call after a change walks them once.
  unsigned long GetColorForFeed(double feed);

  // Replaces all values of the registry key by the rows, in one transaction: if the process is killed meanwhile, the
  // registry has the old table or the new one. 1 if all rows were written.
  int SaveValuesToRegistry() override;
  // Replaces the rows by those of the registry key, sorted in ascending order; reading stops at the first value longer
  // than a colour. An empty key gives one row, up to 100000, in a random colour from the C runtime's rand(). Kept for
  // existing modules, unlike other keys: it creates the registry key, and it always returns 0, so that a tree which
  // holds a table returns 0 too.
  int RestoreValuesFromRegistry() override;

  // As for every key: of an archive's rows only those are loaded whose names the table has.
  void Serialize(CArchive& ar) override;
  void DumpData(FILE* file) override;

 private:
  // A row in list order, with the highest threshold of the rows up to it: ascending, for the binary search.
  struct Step {
    double reach;
    const QFColorValue* row;
    POSITION next;
  };

  QFColorValue* NextRow(POSITION& position) const;
  void CollectSteps();

  POSITION m_Pos = nullptr;
  std::vector<Step> m_Steps;
  ULONGLONG m_nStepsVersion = ~ULONGLONG{0};  // GetListVersion() at the last collection
};

// The product's tables. Each sets its name and path.
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
