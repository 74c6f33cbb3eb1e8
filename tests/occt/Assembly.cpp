// Reads a STEP file with an independent toolkit and prints its assembly structure, one line for
// each occurrence below the roots:
//
//     parent<TAB>component<TAB>occurrence<TAB>twelve numbers: rotation by columns, translation
//
// The first line is "unit<TAB>N", the length unit of the file in millimetres.

#include <BRep_Builder.hxx>
#include <STEPCAFControl_Reader.hxx>
#include <StepData_StepModel.hxx>
#include <TColStd_SequenceOfAsciiString.hxx>
#include <TCollection_AsciiString.hxx>
#include <TDF_LabelSequence.hxx>
#include <TDataStd_Name.hxx>
#include <TDocStd_Document.hxx>
#include <TopLoc_Location.hxx>
#include <XCAFApp_Application.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>
#include <cstdio>
#include <set>
#include <string>

namespace {

std::string NameOf(const TDF_Label& label) {
    Handle(TDataStd_Name) name;
    if (!label.FindAttribute(TDataStd_Name::GetID(), name)) return "";
    // Without a replacement for characters beyond ASCII, the text is UTF-8.
    std::string text = TCollection_AsciiString(name->Get(), '\0').ToCString();
    for (char& c : text) {
        if (c == '\n' || c == '\t') c = ' ';
    }
    return text;
}

void Print(const TDF_Label& parent, std::set<std::string>& seen) {
    if (!seen.insert(NameOf(parent)).second) return;
    TDF_LabelSequence components;
    XCAFDoc_ShapeTool::GetComponents(parent, components);
    for (const TDF_Label& component : components) {
        TDF_Label referred;
        XCAFDoc_ShapeTool::GetReferredShape(component, referred);
        const gp_Trsf place = XCAFDoc_ShapeTool::GetLocation(component).Transformation();
        std::printf("%s\t%s\t%s\t", NameOf(parent).c_str(), NameOf(referred).c_str(),
                    NameOf(component).c_str());
        for (int column = 1; column <= 4; ++column) {
            for (int row = 1; row <= 3; ++row) {
                std::printf("%.17g%c", place.Value(row, column),
                            column == 4 && row == 3 ? '\n' : ' ');
            }
        }
        Print(referred, seen);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    STEPCAFControl_Reader reader;
    reader.SetNameMode(true);
    if (reader.ReadFile(argv[1]) != IFSelect_RetDone) return 1;
    TColStd_SequenceOfAsciiString lengths;
    TColStd_SequenceOfAsciiString angles;
    TColStd_SequenceOfAsciiString solidAngles;
    reader.ChangeReader().FileUnits(lengths, angles, solidAngles);
    for (const TCollection_AsciiString& length : lengths) {
        std::printf("unit\t%s\n", length.ToCString());
    }
    Handle(TDocStd_Document) document;
    XCAFApp_Application::GetApplication()->NewDocument("MDTV-XCAF", document);
    if (!reader.Transfer(document)) return 1;
    const Handle(XCAFDoc_ShapeTool) shapes = XCAFDoc_DocumentTool::ShapeTool(document->Main());
    TDF_LabelSequence roots;
    shapes->GetFreeShapes(roots);
    std::set<std::string> seen;
    for (const TDF_Label& root : roots) Print(root, seen);
    return 0;
}
