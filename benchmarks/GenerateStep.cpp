// Generates a STEP file for benchmarks: an assembly of occurrences, and the geometry of its parts
// in the mixture that CAD systems write.
//
//     generate-step OCCURRENCES MEGABYTES [tree|flat|deep] > FILE
//
// The occurrences form a tree in which each assembly has up to ten components; or all are in one
// assembly; or there are ten in each of a chain of assemblies, each a component of the previous
// one. The number of parts is a tenth of the number of occurrences. Geometry follows until the file
// reaches about the given size. The same arguments produce the same file.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace {

class Generator {
  public:
    Generator(long occurrences, double megabytes, const std::string& shape)
        : occurrences_(occurrences),
          bytes_(static_cast<std::uint64_t>(megabytes * 1e6)),
          shape_(shape) {}

    void Run() {
        Header();
        Assembly();
        while (written_ < bytes_) Face();
        Put("ENDSEC;\nEND-ISO-10303-21;\n");
        std::fwrite(buffer_.data(), 1, buffer_.size(), stdout);
    }

  private:
    using Id = std::uint64_t;

    struct Part {
        Id definition;
        Id shape;  // its shape representation, written once its items are known
        std::vector<Id> items;
    };

    void Put(const std::string& text) {
        buffer_ += text;
        written_ += text.size();
        if (buffer_.size() < std::size_t{1} << 20) return;
        std::fwrite(buffer_.data(), 1, buffer_.size(), stdout);
        buffer_.clear();
    }

    static std::string Ref(Id id) { return '#' + std::to_string(id); }

    Id Add(const std::string& record) {
        const Id id = ++last_;
        Put(Ref(id) + '=' + record + ";\n");
        return id;
    }

    std::string Real(double most) {
        char text[32];
        std::snprintf(text, sizeof text, "%.*f", static_cast<int>(random_() % 13) + 1,
                      std::uniform_real_distribution(-most, most)(random_));
        std::string real(text);
        // Trailing zeros are removed, the point is not.
        real.erase(real.find_last_not_of('0') + 1);
        return real;
    }

    Id Point() {
        std::string record = "CARTESIAN_POINT('',(";
        record += Real(1000) + ',' + Real(1000) + ',' + Real(1000) + "))";
        return Add(record);
    }
    Id Direction() {
        static const char* const kAxes[] = {"1.,0.,0.", "0.,1.,0.", "0.,0.,1.", "-1.,0.,0."};
        std::string record = "DIRECTION('',(";
        record +=
            random_() % 4 != 0 ? kAxes[random_() % 4] : Real(1) + ',' + Real(1) + ',' + Real(1);
        return Add(record + "))");
    }
    Id Placement() {
        const Id point = Point();
        const Id axis = Add("DIRECTION('',(0.,0.,1.))");
        const Id reference = Add("DIRECTION('',(1.,0.,0.))");
        return Add("AXIS2_PLACEMENT_3D(''," + Ref(point) + ',' + Ref(axis) + ',' + Ref(reference) +
                   ')');
    }

    void Header() {
        Put("ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('generated to measure with'),'2;1');\n"
            "FILE_NAME('generated','2026-01-01T00:00:00',(''),(''),'','','');\n"
            "FILE_SCHEMA(('AUTOMOTIVE_DESIGN { 1 0 10303 214 1 1 1 1 }'));\nENDSEC;\nDATA;\n");
        application_ = Add("APPLICATION_CONTEXT('core data for automotive mechanical design')");
        productContext_ = Add("PRODUCT_CONTEXT(''," + Ref(application_) + ",'mechanical')");
        definitionContext_ =
            Add("PRODUCT_DEFINITION_CONTEXT('part definition'," + Ref(application_) + ",'design')");
        context_ = Add("(GEOMETRIC_REPRESENTATION_CONTEXT(3)REPRESENTATION_CONTEXT('','3D'))");
    }

    Part NewPart(long number) {
        const std::string name = "'part-" + std::to_string(number) + "'";
        const Id product =
            Add("PRODUCT(" + name + ',' + name + ",''," + '(' + Ref(productContext_) + "))");
        const Id formation = Add("PRODUCT_DEFINITION_FORMATION('1',''," + Ref(product) + ')');
        const Id definition = Add("PRODUCT_DEFINITION('design',''," + Ref(formation) + ',' +
                                  Ref(definitionContext_) + ')');
        const Id origin = Placement();
        return {definition, ++last_, {origin}};
    }

    void Assembly() {
        const long partCount = occurrences_ / 10 + 2;
        std::vector<Part> parts;
        for (long i = 0; i < partCount; ++i) parts.push_back(NewPart(i));
        const long assemblies = partCount / 2 + 1;
        for (long i = 0; i < occurrences_; ++i) {
            const long parent = shape_ == "flat" ? 0 : shape_ == "deep" ? i / 10 : i % assemblies;
            // A component has a larger number than its parent, so that no part contains itself.
            const long least = parent + 1;
            const bool isNext = shape_ == "deep" && i % 10 == 0;
            const long component =
                isNext ? least
                       : least + static_cast<long>(random_() %
                                                   static_cast<std::uint64_t>(partCount - least));
            Occurrence(parts[static_cast<std::size_t>(parent)],
                       parts[static_cast<std::size_t>(component)], i + 1);
        }
        for (const Part& part : parts) {
            std::string items;
            for (const Id item : part.items) items += (items.empty() ? "" : ",") + Ref(item);
            Put(Ref(part.shape) + "=SHAPE_REPRESENTATION('',(" + items + ")," + Ref(context_) +
                ");\n");
            const Id productShape =
                Add("PRODUCT_DEFINITION_SHAPE('',''," + Ref(part.definition) + ')');
            Add("SHAPE_DEFINITION_REPRESENTATION(" + Ref(productShape) + ',' + Ref(part.shape) +
                ')');
        }
    }

    void Occurrence(Part& parent, const Part& component, long number) {
        const Id placement = Placement();
        parent.items.push_back(placement);
        const std::string name = "'" + std::to_string(number) + "'";
        const Id link = Add("NEXT_ASSEMBLY_USAGE_OCCURRENCE(" + name + ",'occurrence " +
                            std::to_string(number) + "',''," + Ref(parent.definition) + ',' +
                            Ref(component.definition) + ",$)");
        const Id shape =
            Add("PRODUCT_DEFINITION_SHAPE('Placement','Placement of an item'," + Ref(link) + ')');
        const Id transformation = Add("ITEM_DEFINED_TRANSFORMATION('',''," +
                                      Ref(component.items.front()) + ',' + Ref(placement) + ')');
        const Id relationship =
            Add("(REPRESENTATION_RELATIONSHIP('',''," + Ref(component.shape) + ',' +
                Ref(parent.shape) + ")REPRESENTATION_RELATIONSHIP_WITH_TRANSFORMATION(" +
                Ref(transformation) + ")SHAPE_REPRESENTATION_RELATIONSHIP())");
        Add("CONTEXT_DEPENDENT_SHAPE_REPRESENTATION(" + Ref(relationship) + ',' + Ref(shape) + ')');
    }

    // A face with its surface, loop and four edges; sometimes a curve of many points.
    void Face() {
        std::vector<Id> vertices;
        for (int i = 0; i < 4; ++i) {
            vertices.push_back(Add("VERTEX_POINT(''," + Ref(Point()) + ')'));
        }
        std::string edges;
        for (std::size_t i = 0; i < 4; ++i) {
            const Id curve = random_() % 8 == 0 ? Spline() : Line();
            const Id edge = Add("EDGE_CURVE(''," + Ref(vertices[i]) + ',' +
                                Ref(vertices[(i + 1) % 4]) + ',' + Ref(curve) + ",.T.)");
            const Id oriented = Add("ORIENTED_EDGE('',*,*," + Ref(edge) + ",.F.)");
            edges += (edges.empty() ? "" : ",") + Ref(oriented);
        }
        const Id loop = Add("EDGE_LOOP('',(" + edges + "))");
        const Id bound = Add("FACE_BOUND(''," + Ref(loop) + ",.T.)");
        const Id plane = Add("PLANE(''," + Ref(Placement()) + ')');
        Add("ADVANCED_FACE('',(" + Ref(bound) + ")," + Ref(plane) + ",.T.)");
    }

    Id Line() {
        const Id point = Point();
        const Id vector = Add("VECTOR(''," + Ref(Direction()) + ",1.)");
        return Add("LINE(''," + Ref(point) + ',' + Ref(vector) + ')');
    }

    Id Spline() {
        std::string points;
        for (int i = 0; i < 8; ++i) points += (points.empty() ? "" : ",") + Ref(Point());
        return Add("B_SPLINE_CURVE_WITH_KNOTS('',3,(" + points +
                   "),.UNSPECIFIED.,.F.,.F.,(4,1,1,1,1,4),(0.,0.2,0.4,0.6,0.8,1.),.UNSPECIFIED.)");
    }

    const long occurrences_;
    const std::uint64_t bytes_;
    const std::string shape_;
    std::mt19937_64 random_{42};
    std::string buffer_;
    std::uint64_t written_ = 0;
    Id last_ = 0;
    Id application_ = 0;
    Id productContext_ = 0;
    Id definitionContext_ = 0;
    Id context_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
    const std::string shape = argc == 4 ? argv[3] : "tree";
    if (argc < 3 || argc > 4 || (shape != "tree" && shape != "flat" && shape != "deep")) {
        std::fprintf(stderr,
                     "usage: generate-step OCCURRENCES MEGABYTES [tree|flat|deep] > FILE\n");
        return 2;
    }
    Generator(std::atol(argv[1]), std::atof(argv[2]), shape).Run();
    return std::ferror(stdout) != 0 ? 1 : 0;
}
