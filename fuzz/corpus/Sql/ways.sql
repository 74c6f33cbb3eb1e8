SELECT instance FROM part WHERE instance = 3;
SELECT instance FROM part WHERE next = 5 ORDER BY at DESC;
SELECT instance FROM part WHERE of_any = '#5' OR entity = 'BOLT';
SELECT p.instance, t.size FROM part p JOIN thing t ON t.instance = p.next;
SELECT next, COUNT(*) FROM part GROUP BY next;
