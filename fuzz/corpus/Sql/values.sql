SELECT * FROM thing; SELECT * FROM part; SELECT * FROM bolt; SELECT * FROM point;
SELECT value FROM part, json_each(part.parts) WHERE part.instance = 3;
SELECT typeof(size), typeof(made), code, tint FROM thing;
