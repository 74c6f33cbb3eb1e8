// Generates a database of parts for benchmarks, as an exchange file of the schema "cdma":
//
//     generate-database PARTS > FILE
//
// Every four parts are revisions of one. Each part has an identity, a configuration item and a
// handler. The same arguments produce the same file.

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: generate-database PARTS > FILE\n");
        return 2;
    }
    const long count = std::atol(argv[1]);
    std::printf(
        "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('generated to measure with'),'2;1');\n"
        "FILE_NAME('generated','2026-01-01T00:00:00',(''),(''),'','','');\n"
        "FILE_SCHEMA(('cdma'));\nENDSEC;\nDATA;\n#1=RANGE_EFFECTIVITY('E1',(),1,99);\n");
    constexpr long kInstances = 4;  // of each part
    for (long i = 0; i < count; ++i) {
        const long part = 2 + kInstances * i;
        std::printf(
            "#%ld=PART_OBJECT('PART-%07ld','%c',%ld,'DETAIL','A part of the database',"
            "$,(),(),$,$);\n",
            part, i / 4, static_cast<char>('A' + i % 4), i % 4 + 1);
        std::printf("#%ld=CDMA_ID(#%ld,'%lX','%lX','PRODUCTION','PARTS');\n", part + 1, part,
                    0x1000 + i / 4, i);
        std::printf("#%ld=CONFIGURATION_ITEM('CFG-%07ld','Item',#%ld);\n", part + 2, i, part);
        std::printf("#%ld=CONFIGURATION_HANDLER('H-%07ld',#%ld);\n", part + 3, i, part);
    }
    long id = 2 + kInstances * count;
    for (long i = 0; i < count; i += 4) {
        std::printf("#%ld=CDMA_REVISION_HISTORY((", id++);
        for (long k = i; k < i + 4 && k < count; ++k) {
            std::printf("%s#%ld", k == i ? "" : ",", 3 + kInstances * k);
        }
        std::printf("));\n");
    }
    std::printf("ENDSEC;\nEND-ISO-10303-21;\n");
    return std::ferror(stdout) != 0 ? 1 : 0;
}
