-- The technology database of the example installation: materials, tools, and the feeds and speeds for each pair.
PRAGMA page_size = 4096;
PRAGMA user_version = 2024;
BEGIN;

CREATE TABLE TechDBVersion (
  Version TEXT NOT NULL,
  Units TEXT NOT NULL CHECK (Units IN ('mm', 'inch'))
);
INSERT INTO TechDBVersion VALUES ('2024.0', 'mm');

-- The groups of ISO 513, P to H.
CREATE TABLE MaterialGroups (
  GroupID TEXT PRIMARY KEY,
  Name TEXT NOT NULL
);
INSERT INTO MaterialGroups VALUES
  ('P', 'Steel'), ('M', 'Stainless steel'), ('K', 'Cast iron'), ('N', 'Non-ferrous metals'), ('S', 'Heat-resistant alloys'),
  ('H', 'Hardened steel');

CREATE TABLE Materials (
  MaterialID INTEGER PRIMARY KEY,
  GroupID TEXT NOT NULL REFERENCES MaterialGroups (GroupID),
  Name TEXT NOT NULL UNIQUE,
  HardnessHB INTEGER NOT NULL
);
INSERT INTO Materials VALUES
  (1, 'P', 'C45', 190), (2, 'P', '16MnCr5', 160), (3, 'P', '42CrMo4', 250), (4, 'M', 'X5CrNi18-10', 180),
  (5, 'M', 'X2CrNiMoN22-5-3', 260), (6, 'K', 'EN-GJL-250', 200), (7, 'K', 'EN-GJS-600-3', 230), (8, 'N', 'EN AW-6082', 95),
  (9, 'N', 'EN AW-7075', 150), (10, 'N', 'CuZn39Pb3', 110), (11, 'S', 'Ti-6Al-4V', 330), (12, 'H', 'X153CrMoV12', 600);

CREATE TABLE Tools (
  ToolID INTEGER PRIMARY KEY,
  Kind TEXT NOT NULL CHECK (Kind IN ('end mill', 'ball mill', 'face mill', 'drill', 'tap', 'turning insert')),
  Name TEXT NOT NULL UNIQUE,
  DiameterMm REAL,
  Teeth INTEGER NOT NULL,
  Substrate TEXT NOT NULL
);
INSERT INTO Tools VALUES
  (1, 'end mill', 'End mill D6 Z4', 6.0, 4, 'carbide'), (2, 'end mill', 'End mill D10 Z4', 10.0, 4, 'carbide'),
  (3, 'end mill', 'End mill D16 Z3 for aluminium', 16.0, 3, 'carbide'), (4, 'ball mill', 'Ball mill D8 Z2', 8.0, 2, 'carbide'),
  (5, 'face mill', 'Face mill D50 Z5', 50.0, 5, 'carbide insert'), (6, 'drill', 'Drill D6.8', 6.8, 2, 'carbide'),
  (7, 'drill', 'Drill D10.2 HSS', 10.2, 2, 'high-speed steel'), (8, 'tap', 'Tap M8', 8.0, 3, 'high-speed steel'),
  (9, 'turning insert', 'CNMG 120408', NULL, 1, 'carbide insert'), (10, 'turning insert', 'DCMT 11T304', NULL, 1, 'carbide insert');

CREATE TABLE FeedsAndSpeeds (
  MaterialID INTEGER NOT NULL REFERENCES Materials (MaterialID),
  ToolID INTEGER NOT NULL REFERENCES Tools (ToolID),
  CuttingSpeedMPerMin REAL NOT NULL,
  FeedPerToothMm REAL NOT NULL,
  Coolant TEXT NOT NULL CHECK (Coolant IN ('flood', 'mist', 'air', 'none')),
  PRIMARY KEY (MaterialID, ToolID)
);
INSERT INTO FeedsAndSpeeds VALUES
  (1, 1, 150, 0.030, 'flood'), (1, 2, 150, 0.050, 'flood'), (1, 4, 180, 0.060, 'air'), (1, 5, 220, 0.200, 'air'),
  (1, 6, 90, 0.090, 'flood'), (1, 7, 28, 0.090, 'flood'), (1, 8, 12, 1.250, 'flood'), (1, 9, 240, 0.300, 'flood'),
  (3, 2, 120, 0.045, 'flood'), (3, 5, 180, 0.180, 'air'), (3, 9, 190, 0.280, 'flood'), (4, 2, 85, 0.040, 'flood'),
  (4, 6, 50, 0.060, 'flood'), (4, 10, 150, 0.180, 'flood'), (6, 5, 200, 0.220, 'none'), (6, 9, 210, 0.320, 'none'),
  (8, 1, 350, 0.045, 'flood'), (8, 3, 450, 0.120, 'mist'), (8, 6, 180, 0.160, 'flood'), (9, 3, 400, 0.110, 'mist'),
  (10, 10, 300, 0.150, 'none'), (11, 2, 55, 0.040, 'flood'), (11, 10, 60, 0.120, 'flood'), (12, 4, 110, 0.030, 'air');

-- The cutting data for look-ups: names instead of ids, and the spindle speed.
CREATE VIEW CuttingData AS
  SELECT m.Name AS Material, t.Name AS Tool, f.CuttingSpeedMPerMin, f.FeedPerToothMm,
         CAST(round(1000 * f.CuttingSpeedMPerMin / (3.14159265358979 * t.DiameterMm)) AS INTEGER) AS SpindleRpm, f.Coolant
  FROM FeedsAndSpeeds f JOIN Materials m USING (MaterialID) JOIN Tools t USING (ToolID);

COMMIT;
