SELECT GetAbsPlacement(instance), IsAnAssembly(3) FROM step.next_assembly_usage_occurrence;
SELECT GetInst('@step#3', 'ID'), GetMemberCount('[1,2]'), ORXTrunc('text', 2), Minus(1);
SELECT DecodeKey('S0003ABC', 1), GetItem(1, '[1.5]'), IsVersion('#1', 1), IsSame0(1, '@step#1');
SELECT GetPlacement0('@step#5', '[]'), BuildDatedEff('12312099235959', 'step');
