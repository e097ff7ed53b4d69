-- A few elements for the example project: an aquifer, three pumping wells and one
-- river as a head-specified line-sink string with its four vertices. Run against a
-- freshly created example.trn; every field not named takes the default of the schema.
-- A discharge well keeps its pumping rate (m3/day) in the Head column.
BEGIN;
UPDATE Model SET AQBase = 80.0, AQThickness = '40', AQHydCond = 15.0, AQPorosity = 0.25;
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 1200.0, 850.0);
INSERT INTO Wells(VID, Label, Head) VALUES (last_insert_rowid(), 'Municipal1', 800.0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 1450.0, 700.0);
INSERT INTO Wells(VID, Label, Head) VALUES (last_insert_rowid(), 'Municipal2', 500.0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 900.0, 1300.0);
INSERT INTO Wells(VID, Label, Head) VALUES (last_insert_rowid(), 'Irrigation', 300.0);
INSERT INTO Polygons(Closed) VALUES (0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES ((SELECT max(PID) FROM Polygons), 0, 0.0, 0.0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES ((SELECT max(PID) FROM Polygons), 100, 600.0, 250.0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES ((SELECT max(PID) FROM Polygons), 200, 1300.0, 300.0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES ((SELECT max(PID) FROM Polygons), 300, 2000.0, 100.0);
INSERT INTO LinesinkStrings(PID, Label, StartingHead, EndingHead)
  VALUES ((SELECT max(PID) FROM Polygons), 'WabashRiver', 120.0, 118.5);
COMMIT;
