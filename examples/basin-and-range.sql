-- Basin and Range Example: the basin-fill aquifer of an intermontane valley, fed
-- from the alluvial fans at the range front and drained by a spring-fed creek, a
-- river along the valley axis and evaporation from the playa.
--
-- Run against a project made by `tarnocmd new` with map units metres and model
-- units feet (see scripts/make-examples): coordinates are UTM zone 11 metres,
-- elevations feet above sea level, rates cubic feet a day, conductivities feet a
-- day. Every field not named takes the default of the schema. A discharge-specified
-- well keeps its pumping rate in Head, a pond its recharge rate (ft/day) in Head
-- and its radius in Radius.
BEGIN;

UPDATE Model SET
  AQBase = 4200.0, AQThickness = '600', AQHydCond = 25.0, AQPorosity = 0.2, AQRecharge = 0.0,
  CONTOURShow = 1, CONTOURMinimum = 4480.0, CONTOURMaximum = 4640.0, CONTOURInterval = 5.0,
  CONTOURLevel = 40, TRACECompute = 1, TRACEStep = 50.0, TRACEMaxTime = 18250.0,
  SOLVERIterations = 8,
  WINDOWX1 = 594000.0, WINDOWY1 = 4294000.0, WINDOWX2 = 612000.0, WINDOWY2 = 4312000.0;

-- The river system ------------------------------------------------------------------

-- The river along the valley axis, head-specified with a sandy bed.
INSERT INTO Polygons(Closed) VALUES (0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES
  ((SELECT max(PID) FROM Polygons), 0,   595000.0, 4308500.0),
  ((SELECT max(PID) FROM Polygons), 100, 599000.0, 4307800.0),
  ((SELECT max(PID) FROM Polygons), 200, 603000.0, 4308200.0),
  ((SELECT max(PID) FROM Polygons), 300, 607000.0, 4307500.0),
  ((SELECT max(PID) FROM Polygons), 400, 611000.0, 4307900.0);
INSERT INTO LinesinkStrings(PID, Label, HeadSpecified, StartingHead, EndingHead, Resistance, Width, Depth)
  VALUES ((SELECT max(PID) FROM Polygons), 'ValleyRiver', 1, 4560.0, 4530.0, 2.0, 60.0, 4.0);

-- The valley's outflow far down the axis: far field.
INSERT INTO Polygons(Closed) VALUES (0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES
  ((SELECT max(PID) FROM Polygons), 0,   613500.0, 4300000.0),
  ((SELECT max(PID) FROM Polygons), 100, 614000.0, 4306000.0);
INSERT INTO LinesinkStrings(PID, Label, HeadSpecified, StartingHead, EndingHead, Farfield)
  VALUES ((SELECT max(PID) FROM Polygons), 'ValleyOutflow', 1, 4500.0, 4515.0, 1);

-- Spring Creek, routed: fed by a range-front spring (40000 ft3/day), it runs down
-- the fan and ends on the river.
INSERT INTO Polygons(Closed) VALUES (0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES
  ((SELECT max(PID) FROM Polygons), 0,   598000.0, 4298500.0),
  ((SELECT max(PID) FROM Polygons), 100, 599500.0, 4301500.0),
  ((SELECT max(PID) FROM Polygons), 200, 600500.0, 4304000.0);
INSERT INTO LinesinkStrings(PID, Label, HeadSpecified, Routing, StartingHead, EndingHead,
                            Resistance, Width, Depth, EndInflow, OverlandFlow)
  VALUES ((SELECT max(PID) FROM Polygons), 'SpringCreekUpper', 1, 1, 4620.0, 4580.0, 5.0, 10.0, 1.0,
          40000.0, 0.0);
INSERT INTO Polygons(Closed) VALUES (0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES
  ((SELECT max(PID) FROM Polygons), 0,   600500.0, 4304000.0),
  ((SELECT max(PID) FROM Polygons), 100, 601500.0, 4306200.0),
  ((SELECT max(PID) FROM Polygons), 200, 603000.0, 4308200.0);
INSERT INTO LinesinkStrings(PID, Label, HeadSpecified, Routing, EndStream, StartingHead,
                            EndingHead, Resistance, Width, Depth)
  VALUES ((SELECT max(PID) FROM Polygons), 'SpringCreekLower', 1, 1, 1, 4580.0, 4548.0, 5.0, 12.0, 1.5);

-- Evaporation from the playa, as drains a few feet below its floor.
INSERT INTO Polygons(Closed) VALUES (0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES
  ((SELECT max(PID) FROM Polygons), 0,   605500.0, 4301000.0),
  ((SELECT max(PID) FROM Polygons), 100, 608500.0, 4301500.0);
INSERT INTO LinesinkStrings(PID, Label, HeadSpecified, Drain, StartingHead, EndingHead, Resistance, Width, Depth)
  VALUES ((SELECT max(PID) FROM Polygons), 'PlayaNorth', 1, 1, 4522.0, 4521.0, 10.0, 200.0, 3.0);
INSERT INTO Polygons(Closed) VALUES (0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES
  ((SELECT max(PID) FROM Polygons), 0,   605800.0, 4299500.0),
  ((SELECT max(PID) FROM Polygons), 100, 608800.0, 4299800.0);
INSERT INTO LinesinkStrings(PID, Label, HeadSpecified, Drain, StartingHead, EndingHead, Resistance, Width, Depth)
  VALUES ((SELECT max(PID) FROM Polygons), 'PlayaSouth', 1, 1, 4521.0, 4520.0, 10.0, 200.0, 3.0);

-- Wells ------------------------------------------------------------------------------

-- The town's supply (about 1.1 million gallons a day) and two irrigation wells,
-- each with particles for its capture zone.
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 602500.0, 4305000.0);
INSERT INTO Wells(VID, Label, Head, Radius, NParticles, StartElev, TopElev, BottomElev)
  VALUES (last_insert_rowid(), 'TownWell', 150000.0, 1.0, 16, 4450.0, 4800.0, 4200.0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 604000.0, 4303000.0);
INSERT INTO Wells(VID, Label, Head, Radius, NParticles, StartElev, TopElev, BottomElev)
  VALUES (last_insert_rowid(), 'IrrigationNorth', 250000.0, 1.0, 12, 4450.0, 4800.0, 4200.0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 603500.0, 4299000.0);
INSERT INTO Wells(VID, Label, Head, Radius, NParticles, StartElev, TopElev, BottomElev)
  VALUES (last_insert_rowid(), 'IrrigationSouth', 250000.0, 1.0, 12, 4450.0, 4800.0, 4200.0);
-- A monitoring-and-supply well screened deep in the basin fill.
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 606500.0, 4304500.0);
INSERT INTO Wells(VID, Label, Head, Radius, PPWell, TopElev, BottomElev)
  VALUES (last_insert_rowid(), 'DeepSupplyPP', 60000.0, 0.5, 1, 4350.0, 4250.0);
-- An open-pit mine dewatered to a fixed level.
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 597000.0, 4302500.0);
INSERT INTO Wells(VID, Label, Head, Radius, HeadSpecified, TopElev, BottomElev)
  VALUES (last_insert_rowid(), 'MinePitDewatering', 4500.0, 150.0, 1, 4800.0, 4200.0);
-- Rapid infiltration basin of the town's treated water: 0.5 ft/day over 100 ft radius.
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 601000.0, 4302000.0);
INSERT INTO Wells(VID, Label, Head, Radius, Pond, TopElev, BottomElev)
  VALUES (last_insert_rowid(), 'InfiltrationBasin', 0.5, 100.0, 1, 4800.0, 4200.0);

-- Area elements ----------------------------------------------------------------------

-- The coarse alluvial fans at the range front: higher conductivity and the
-- mountain-front recharge (0.002 ft/day).
INSERT INTO Polygons(Closed) VALUES (1);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES
  ((SELECT max(PID) FROM Polygons), 0,   595500.0, 4296000.0),
  ((SELECT max(PID) FROM Polygons), 100, 600000.0, 4296000.0),
  ((SELECT max(PID) FROM Polygons), 200, 600500.0, 4299000.0),
  ((SELECT max(PID) FROM Polygons), 300, 598500.0, 4301000.0),
  ((SELECT max(PID) FROM Polygons), 400, 595500.0, 4300500.0);
INSERT INTO Inhomogeneities(PID, Label, HydCond, Recharge, Porosity, ChangeK, ChangeR)
  VALUES ((SELECT max(PID) FROM Polygons), 'AlluvialFans', 60.0, 0.002, 0.25, 1, 1);

-- The range-front fault: a wall of gouge, 50 ft thick, of low conductivity.
INSERT INTO Polygons(Closed) VALUES (0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES
  ((SELECT max(PID) FROM Polygons), 0,   594800.0, 4301500.0),
  ((SELECT max(PID) FROM Polygons), 100, 596500.0, 4304500.0),
  ((SELECT max(PID) FROM Polygons), 200, 598000.0, 4306500.0);
INSERT INTO NoFlowStrings(PID, Label, HydCond, Thickness, Porosity, BottomElevation, Closed)
  VALUES ((SELECT max(PID) FROM Polygons), 'RangeFrontFault', 0.05, 50.0, 0.15, 4200.0, 0);

-- Observations and tracing -----------------------------------------------------------

INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 598500.0, 4303500.0);
INSERT INTO TestPoints(VID, Label, ObsHead) VALUES (last_insert_rowid(), 'BR-1', 4552.0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 602000.0, 4305500.0);
INSERT INTO TestPoints(VID, Label, ObsHead) VALUES (last_insert_rowid(), 'BR-2', 4541.0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 604500.0, 4302500.0);
INSERT INTO TestPoints(VID, Label, ObsHead) VALUES (last_insert_rowid(), 'BR-3', 4528.0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 607000.0, 4300500.0);
INSERT INTO TestPoints(VID, Label, ObsHead) VALUES (last_insert_rowid(), 'BR-4', 4523.0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 598000.0, 4298000.0);
INSERT INTO TestPoints(VID, Label, ObsHead) VALUES (last_insert_rowid(), 'BR-5', 4585.0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 609500.0, 4306000.0);
INSERT INTO TestPoints(VID, Label, ObsHead) VALUES (last_insert_rowid(), 'BR-6', 4526.0);
-- The gage on Spring Creek above its mouth (ft3/day).
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 602200.0, 4307100.0);
INSERT INTO TestPoints(VID, Label, ObsHead, ObsStreamFlow, Type)
  VALUES (last_insert_rowid(), 'SpringCreekGage', 0.0, 65000.0, 'Gage');

-- Particles from the fans forward, and backward from the playa.
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 597000.0, 4297500.0);
INSERT INTO Particles(VID, Elevation, SatdThick, Forward) VALUES (last_insert_rowid(), 1.0, 1, 1);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 599000.0, 4297000.0);
INSERT INTO Particles(VID, Elevation, SatdThick, Forward) VALUES (last_insert_rowid(), 1.0, 1, 1);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 596500.0, 4299500.0);
INSERT INTO Particles(VID, Elevation, SatdThick, Forward) VALUES (last_insert_rowid(), 1.0, 1, 1);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 607000.0, 4301200.0);
INSERT INTO Particles(VID, Elevation, SatdThick, Forward) VALUES (last_insert_rowid(), 4450.0, 0, 0);

-- The flow out of the fans into the basin.
INSERT INTO Polygons(Closed) VALUES (0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES
  ((SELECT max(PID) FROM Polygons), 0,   600800.0, 4296000.0),
  ((SELECT max(PID) FROM Polygons), 100, 601200.0, 4299500.0),
  ((SELECT max(PID) FROM Polygons), 200, 599500.0, 4302000.0);
INSERT INTO FluxInspect(PID, Label) VALUES ((SELECT max(PID) FROM Polygons), 'FanOutflow');

COMMIT;
