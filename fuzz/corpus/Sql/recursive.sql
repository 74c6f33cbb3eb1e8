WITH RECURSIVE below(part, depth) AS (
  SELECT 4, 0 UNION ALL SELECT p.next, depth + 1 FROM below JOIN part p ON p.instance = below.part)
SELECT * FROM below LIMIT 20;
