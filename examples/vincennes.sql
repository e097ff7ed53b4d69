-- Vincennes, Indiana Example: the outwash aquifer of the Wabash valley at Vincennes.
--
-- Run against a project made by `tarnocmd new` (map and model units metres; see
-- scripts/make-examples). Coordinates are UTM zone 16 metres, elevations metres
-- above sea level, rates m3/day. Every field not named takes the default of the
-- schema. A discharge-specified well keeps its pumping rate in Head, a pond its
-- recharge rate (m/day) in Head and its radius in Radius.
BEGIN;

-- The aquifer: sand and gravel outwash on shale, 35 m thick, unconfined at present
-- heads. Contours of heads over the valley, pathlines for ten years.
UPDATE Model SET
  AQBase = 100.0, AQThickness = '35', AQHydCond = 75.0, AQPorosity = 0.25, AQRecharge = 0.0,
  CONTOURShow = 1, CONTOURMinimum = 112.0, CONTOURMaximum = 126.0, CONTOURInterval = 0.5,
  CONTOURLevel = 40, TRACECompute = 1, TRACEStep = 10.0, TRACEMaxTime = 3650.0,
  SOLVERIterations = 6,
  WINDOWX1 = 447000.0, WINDOWY1 = 4386000.0, WINDOWX2 = 463500.0, WINDOWY2 = 4397500.0;

-- The river system ------------------------------------------------------------------

-- The Wabash River: head-specified with a silty bed (1 day over 150 m of width).
INSERT INTO Polygons(Closed) VALUES (0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES
  ((SELECT max(PID) FROM Polygons), 0,   456800.0, 4396000.0),
  ((SELECT max(PID) FROM Polygons), 100, 456200.0, 4394000.0),
  ((SELECT max(PID) FROM Polygons), 200, 455600.0, 4391800.0),
  ((SELECT max(PID) FROM Polygons), 300, 455000.0, 4390000.0),
  ((SELECT max(PID) FROM Polygons), 400, 454000.0, 4388200.0);
INSERT INTO LinesinkStrings(PID, Label, HeadSpecified, StartingHead, EndingHead, Resistance, Width, Depth)
  VALUES ((SELECT max(PID) FROM Polygons), 'WabashRiver', 1, 117.2, 115.8, 1.0, 150.0, 3.0);

-- The Embarras River on the Illinois side: far field, fixes the heads to the west.
INSERT INTO Polygons(Closed) VALUES (0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES
  ((SELECT max(PID) FROM Polygons), 0,   447500.0, 4396500.0),
  ((SELECT max(PID) FROM Polygons), 100, 448200.0, 4392000.0),
  ((SELECT max(PID) FROM Polygons), 200, 448500.0, 4387500.0);
INSERT INTO LinesinkStrings(PID, Label, HeadSpecified, StartingHead, EndingHead, Farfield)
  VALUES ((SELECT max(PID) FROM Polygons), 'EmbarrasRiver', 1, 117.0, 115.5, 1);

-- Kelso Creek, routed in two reaches: 2000 m3/day enter at its upper end, the
-- lower reach ends on a vertex of the Wabash.
INSERT INTO Polygons(Closed) VALUES (0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES
  ((SELECT max(PID) FROM Polygons), 0,   462000.0, 4394500.0),
  ((SELECT max(PID) FROM Polygons), 100, 459500.0, 4393000.0),
  ((SELECT max(PID) FROM Polygons), 200, 457800.0, 4392200.0);
INSERT INTO LinesinkStrings(PID, Label, HeadSpecified, Routing, StartingHead, EndingHead,
                            Resistance, Width, Depth, EndInflow, OverlandFlow)
  VALUES ((SELECT max(PID) FROM Polygons), 'KelsoCreekUpper', 1, 1, 118.4, 116.9, 2.0, 6.0, 0.8,
          2000.0, 0.05);
INSERT INTO Polygons(Closed) VALUES (0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES
  ((SELECT max(PID) FROM Polygons), 0,   457800.0, 4392200.0),
  ((SELECT max(PID) FROM Polygons), 100, 456700.0, 4391900.0),
  ((SELECT max(PID) FROM Polygons), 200, 455600.0, 4391800.0);
INSERT INTO LinesinkStrings(PID, Label, HeadSpecified, Routing, EndStream, StartingHead,
                            EndingHead, Resistance, Width, Depth)
  VALUES ((SELECT max(PID) FROM Polygons), 'KelsoCreekLower', 1, 1, 1, 116.9, 115.8, 2.0, 8.0, 1.0);

-- Tile drains under the fields east of town: they take water only while the water
-- table stands above them.
INSERT INTO Polygons(Closed) VALUES (0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES
  ((SELECT max(PID) FROM Polygons), 0,   460500.0, 4389500.0),
  ((SELECT max(PID) FROM Polygons), 100, 461500.0, 4390000.0),
  ((SELECT max(PID) FROM Polygons), 200, 462500.0, 4390500.0);
INSERT INTO LinesinkStrings(PID, Label, HeadSpecified, Drain, StartingHead, EndingHead, Resistance, Width, Depth)
  VALUES ((SELECT max(PID) FROM Polygons), 'TileDrainEast', 1, 1, 121.5, 120.5, 1.5, 1.0, 0.5);
INSERT INTO Polygons(Closed) VALUES (0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES
  ((SELECT max(PID) FROM Polygons), 0,   459800.0, 4395800.0),
  ((SELECT max(PID) FROM Polygons), 100, 461200.0, 4396400.0);
INSERT INTO LinesinkStrings(PID, Label, HeadSpecified, Drain, StartingHead, EndingHead, Resistance, Width, Depth)
  VALUES ((SELECT max(PID) FROM Polygons), 'TileDrainNorth', 1, 1, 122.0, 121.6, 1.5, 1.0, 0.5);

-- Wells ------------------------------------------------------------------------------

-- The city's well field: two discharge-specified wells, twelve particles each for
-- their capture zones.
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 457300.0, 4393400.0);
INSERT INTO Wells(VID, Label, Head, Radius, NParticles, StartElev, TopElev, BottomElev)
  VALUES (last_insert_rowid(), 'CityWell1', 2500.0, 0.3, 12, 115.0, 135.0, 100.0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 457600.0, 4392900.0);
INSERT INTO Wells(VID, Label, Head, Radius, NParticles, StartElev, TopElev, BottomElev)
  VALUES (last_insert_rowid(), 'CityWell2', 2000.0, 0.3, 12, 115.0, 135.0, 100.0);
-- An industrial well screened in the lower part of the aquifer.
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 458500.0, 4390200.0);
INSERT INTO Wells(VID, Label, Head, Radius, PPWell, TopElev, BottomElev)
  VALUES (last_insert_rowid(), 'IndustrialPP', 1200.0, 0.25, 1, 110.0, 104.0);
-- A gravel pit held at a fixed level by its dewatering pumps.
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 459500.0, 4388600.0);
INSERT INTO Wells(VID, Label, Head, Radius, HeadSpecified, TopElev, BottomElev)
  VALUES (last_insert_rowid(), 'GravelPitDewatering', 117.5, 2.0, 1, 135.0, 100.0);
-- A recharge basin of 60 m radius taking 0.05 m/day.
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 460200.0, 4392400.0);
INSERT INTO Wells(VID, Label, Head, Radius, Pond, TopElev, BottomElev)
  VALUES (last_insert_rowid(), 'RechargeBasin', 0.05, 60.0, 1, 135.0, 100.0);

-- Area elements ----------------------------------------------------------------------

-- The till upland east of the valley: lower conductivity, recharge 0.4 mm/day.
INSERT INTO Polygons(Closed) VALUES (1);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES
  ((SELECT max(PID) FROM Polygons), 0,   459000.0, 4386500.0),
  ((SELECT max(PID) FROM Polygons), 100, 462800.0, 4386500.0),
  ((SELECT max(PID) FROM Polygons), 200, 462800.0, 4389300.0),
  ((SELECT max(PID) FROM Polygons), 300, 460500.0, 4389000.0),
  ((SELECT max(PID) FROM Polygons), 400, 459000.0, 4388000.0);
INSERT INTO Inhomogeneities(PID, Label, HydCond, Recharge, Porosity, ChangeK, ChangeR)
  VALUES ((SELECT max(PID) FROM Polygons), 'TillUpland', 8.0, 0.0004, 0.25, 1, 1);

-- A buried bedrock ridge south of town: an impermeable open wall.
INSERT INTO Polygons(Closed) VALUES (0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES
  ((SELECT max(PID) FROM Polygons), 0,   456300.0, 4387200.0),
  ((SELECT max(PID) FROM Polygons), 100, 457400.0, 4387600.0),
  ((SELECT max(PID) FROM Polygons), 200, 458300.0, 4387400.0);
INSERT INTO NoFlowStrings(PID, Label, HydCond, Thickness, Porosity, BottomElevation, Closed)
  VALUES ((SELECT max(PID) FROM Polygons), 'BedrockRidge', 0.0, 1.0, 0.2, 100.0, 0);

-- Observations and tracing -----------------------------------------------------------

INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 457000.0, 4395200.0);
INSERT INTO TestPoints(VID, Label, ObsHead) VALUES (last_insert_rowid(), 'MW-1', 117.9);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 458200.0, 4393800.0);
INSERT INTO TestPoints(VID, Label, ObsHead) VALUES (last_insert_rowid(), 'MW-2', 118.1);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 457450.0, 4393150.0);
INSERT INTO TestPoints(VID, Label, ObsHead) VALUES (last_insert_rowid(), 'MW-3', 116.4);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 459800.0, 4391200.0);
INSERT INTO TestPoints(VID, Label, ObsHead) VALUES (last_insert_rowid(), 'MW-4', 119.6);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 461500.0, 4387800.0);
INSERT INTO TestPoints(VID, Label, ObsHead) VALUES (last_insert_rowid(), 'MW-5', 122.3);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 455200.0, 4388800.0);
INSERT INTO TestPoints(VID, Label, ObsHead) VALUES (last_insert_rowid(), 'MW-6', 116.2);
-- The stream gage on Kelso Creek above its mouth (m3/day).
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 456000.0, 4391830.0);
INSERT INTO TestPoints(VID, Label, ObsHead, ObsStreamFlow, Type)
  VALUES (last_insert_rowid(), 'KelsoGage', 0.0, 1150.0, 'Gage');

-- Particles: forward from the upland and the recharge basin, backward from the
-- river bank at the well field; at the water table (a fraction of the saturated
-- thickness).
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 461800.0, 4388200.0);
INSERT INTO Particles(VID, Elevation, SatdThick, Forward) VALUES (last_insert_rowid(), 1.0, 1, 1);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 460300.0, 4392500.0);
INSERT INTO Particles(VID, Elevation, SatdThick, Forward) VALUES (last_insert_rowid(), 1.0, 1, 1);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 460000.0, 4394500.0);
INSERT INTO Particles(VID, Elevation, SatdThick, Forward) VALUES (last_insert_rowid(), 1.0, 1, 1);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 456500.0, 4393000.0);
INSERT INTO Particles(VID, Elevation, SatdThick, Forward) VALUES (last_insert_rowid(), 108.0, 0, 0);

-- The flow towards the river between the well field and the bank.
INSERT INTO Polygons(Closed) VALUES (0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES
  ((SELECT max(PID) FROM Polygons), 0,   456900.0, 4395500.0),
  ((SELECT max(PID) FROM Polygons), 100, 456500.0, 4392500.0),
  ((SELECT max(PID) FROM Polygons), 200, 455700.0, 4389000.0);
INSERT INTO FluxInspect(PID, Label) VALUES ((SELECT max(PID) FROM Polygons), 'EastBankFlux');

COMMIT;
