#include "assembler.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "core/numtext.h"
#include "settings/settings_store.h"

namespace mb {

namespace fs = std::filesystem;

namespace {

// Reads a single-byte text file as lines; CR LF, LF and CR all end a line.
bool ReadLines(const std::string& path, std::vector<std::string>& lines) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    std::string data((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::string cur;
    for (size_t i = 0; i < data.size(); ++i) {
        const char c = data[i];
        if (c == '\r' || c == '\n') {
            lines.push_back(cur);
            cur.clear();
            if (c == '\r' && i + 1 < data.size() && data[i + 1] == '\n') ++i;
        } else {
            cur.push_back(c);
        }
    }
    if (!cur.empty()) lines.push_back(cur);
    return true;
}

bool StartsWith(std::string_view s, std::string_view p) {
    return s.substr(0, p.size()) == p;
}
bool EndsWith(std::string_view s, std::string_view p) {
    return s.size() >= p.size() && s.substr(s.size() - p.size()) == p;
}

std::string CollapseBlanks(std::string_view s) {
    std::string out;
    for (char c : s) {
        if (c == ' ' && !out.empty() && out.back() == ' ') continue;
        out.push_back(c);
    }
    return out;
}

// Position of the first "," outside quotes, or npos.
size_t FirstCommaOutsideQuotes(const std::string& s) {
    return BlankQuoted(s).find(',');
}

std::vector<std::string> SplitOutsideQuotes(const std::string& s) {
    std::vector<std::string> parts;
    const std::string blanked = BlankQuoted(s);
    size_t start = 0;
    for (size_t i = 0; i <= s.size(); ++i)
        if (i == s.size() || blanked[i] == ',') {
            parts.push_back(s.substr(start, i - start));
            start = i + 1;
        }
    return parts;
}

// The elements of a DB or DW list as they will be evaluated ("" stands for 0).
std::vector<std::string> DataElements(const std::string& list) {
    std::vector<std::string> out;
    const std::vector<std::string> parts = SplitOutsideQuotes(list);
    for (size_t i = 0; i < parts.size(); ++i) {
        const std::string e = TrimText(parts[i]);
        if (e == "\"\"") continue;
        if (e.empty() && i + 1 == parts.size()) break;
        out.push_back(e);
    }
    return out;
}

// Splits string elements of four or more characters into one element per character.
std::string RewriteDataList(const std::string& list) {
    std::string out;
    const std::vector<std::string> parts = SplitOutsideQuotes(list);
    for (size_t i = 0; i < parts.size(); ++i) {
        const std::string e = TrimText(parts[i]);
        std::string rewritten = e;
        if (e.size() >= 4 && (e[0] == '"' || e[0] == '\'') && e.back() == e[0]) {
            rewritten.clear();
            for (size_t k = 1; k + 1 < e.size(); ++k) {
                if (!rewritten.empty()) rewritten += ",";
                rewritten += e[k] == '\'' ? std::string("\"'\"") : "'" + std::string(1, e[k]) + "'";
            }
        }
        if (i > 0) out += ",";
        out += rewritten;
    }
    return out;
}

// "12Ch (300)" and "-C8h (-200)".
std::string HexAndDecimal(long long v) {
    std::ostringstream o;
    o << (v < 0 ? "-" : "") << std::uppercase << std::hex << std::abs(v) << "h (" << std::dec << v
      << ")";
    return o.str();
}

struct ClassRule {
    int min, max;
    const char* words;
};

ClassRule RuleOf(OperandClass c) {
    switch (c) {
        case OperandClass::Byte: return {-128, 255, " (-80-FFh (-128-255) value expected)"};
        case OperandClass::Displacement: return {-128, 127, " (-80-7Fh (-128-127) value expected)"};
        case OperandClass::Word:
            return {-32768, 65535, " (-8000-FFFFh (-32768-65535) value expected)"};
        case OperandClass::Address: return {0, 65535, " (0-FFFFh (0-65535) value expected)"};
        case OperandClass::Relative: return {-126, 129, " (-126-129 value expected)"};
        case OperandClass::Restart:
            return {0, 56, " (00h, 08h, 10h, 18h, 20h, 28h, 30h or 38h value expected)"};
    }
    return {0, 0, ""};
}

std::string Quoted(const std::string& s) {
    return "'" + s + "'";
}

std::string DsErrorText(const SourceLine& line) {
    return "Invalid argument of the DS directive. " + Quoted(line.Operand1) +
           " (0-FFFFh value expected)";
}

std::string WithArgs(std::string key) {
    std::string out;
    for (char c : key) out += c == '*' ? std::string("<arg>") : std::string(1, c);
    return out;
}

void AppendByte(std::string& text, int byte) {
    if (!text.empty()) text += ' ';
    text += pb_hex2(byte & 0xFF);
}

bool IsRegisterWord(const std::string& u) {
    static const char* kWords[] = {"A", "B",  "C",  "D",  "E",  "H",  "L",   "I",
                                   "R", "BC", "DE", "HL", "SP", "AF", "AF'", "NZ",
                                   "Z", "NC", "C",  "PO", "PE", "P",  "M"};
    for (const char* w : kWords)
        if (u == w) return true;
    return false;
}

bool RestIsDisplacement(const std::string& rest) {
    const std::string t = TrimText(rest);
    return t.empty() || t[0] == '+' || t[0] == '-';
}

// Key part of one operand; the operand keeps what stays open.
std::string AnalyseOperand(std::string& op) {
    std::string key;
    bool owe = false;
    if (op.size() >= 2 && op.front() == '(' && op.back() == ')') {
        key += "(";
        op = TrimText(op.substr(1, op.size() - 2));
        owe = true;
    }
    const std::string u = UpperText(op);
    const std::string u3 = u.substr(0, 3), u2 = u.substr(0, 2);
    if ((u3 == "IXH" || u3 == "IXL" || u3 == "IYH" || u3 == "IYL") &&
        RestIsDisplacement(op.substr(3))) {
        key += u2 + static_cast<char>(std::tolower(static_cast<unsigned char>(u3[2])));
        op = TrimText(op.substr(3));
    } else if ((u2 == "IX" || u2 == "IY") && RestIsDisplacement(op.substr(2))) {
        key += u2;
        op = TrimText(op.substr(2));
    }
    const std::string now = UpperText(op);
    if (op.empty() || IsRegisterWord(now)) {
        key += now;
        op.clear();
    } else {
        key += "*";
    }
    if (owe) key += ")";
    return key;
}

}  // namespace

Assembler::Assembler(SettingsStore& settings, AssemblerHost& host, AssemblerOptions options)
    : settings_(settings), host_(host), options_(std::move(options)) {}

AssemblerOptions ReadAssemblerOptions(SettingsStore& settings) {
    AssemblerOptions options;
    options.UnofficialInstructions = settings.GetSettingInt("Enable Unofficial Instructions", 0);
    options.NoOperatorPrecedence = settings.GetSettingInt(kSettingNoOperatorPrecedence, 0);
    options.GenerateObjCopy = settings.GetSettingInt(kSettingObjCopy, 0);
    options.ObjCopyExtension = settings.GetSettingText(kSettingObjCopyExtension, "bin");
    return options;
}

bool Assembler::HexEnabled() {
    return settings_.GetSettingText("Generate HEX File Also", "ON") == "ON";
}

void Assembler::Progress(const std::string& first, const std::string& second, int pauseMs) {
    if (silent_) return;
    host_.Status(first, second);
    host_.Yield();
    if (pauseMs) host_.Pause(pauseMs);
}

int Assembler::Evaluate(const std::string& text, bool silent) {
    ExpressionContext ctx;
    ctx.symbols = &session_.symbols;
    ctx.programCounter = session_.ProgramCounter;
    ctx.noOperatorPrecedence = options_.NoOperatorPrecedence;
    ctx.evaluationReported = &session_.EvaluationReported;
    ctx.reporter = &host_;
    return EvaluateExpression(text, silent, ctx);
}

void Assembler::MarkError(SourceLine& line, const std::string& text, int severity) {
    line.ErrorText = text;
    line.ErrorSeverity = severity;
    ++session_.ErrorCount;
}

// ---- Driver ----

int Assembler::AssembleSource(const std::string& folder, const std::string& fileName, int& status) {
    silent_ = status == kSilentAssembly;
    session_ = AssemblySession{};
    session_.Folder = folder.empty() || folder.back() == '/' ? folder : folder + "/";
    Progress("Loading source file.", "", 200);

    std::string base = fileName;
    if (base.size() >= 4 && LowerText(base.substr(base.size() - 4)) == ".asm")
        base.resize(base.size() - 4);
    session_.BaseName = base;

    session_.FillValue = settings_.GetSettingInt("OBJ File Fill Value", 0) & 0xFF;
    // Addresses below 0 do not exist; above the code they give an empty file.
    session_.ObjStartAddress =
        std::max(0, settings_.GetSettingInt("Starting Address For OBJ Files Creation", 0));
    session_.ObjectCells.assign(65536, session_.FillValue);
    for (const auto& [name, value] : session_.PredefinedSymbols)
        if (!session_.symbols.FindLabel(name)) session_.symbols.Add(name, value, 0);
    protection_.Reset();

    session_.SourcePath = session_.Folder + fileName;
    if (!ReadMainFile(session_.SourcePath)) {
        // Nothing to assemble: the run fails before it writes anything.
        AssemblerError e;
        e.Text = "Error: File \"" + session_.SourcePath + "\" cannot be read.";
        e.Severity = 1;
        session_.ErrorList.push_back(std::move(e));
        session_.ErrorCount = 1;
        status = session_.ErrorCount;
        return session_.ErrorCount;
    }
    Progress("Running ASM preprocessor.", "", 200);
    PreprocessSource();
    Pass1();
    Pass2();

    Progress("Writing LST file.", "", 200);
    WriteListing(silent_);
    if (session_.SizeState != 3) {
        Progress("Writing OBJ file.", "", 200);
        WriteObjectFiles();
    }
    status = session_.ErrorCount;
    return session_.ErrorCount;
}

void Assembler::DeleteOutputs(const std::string& folder, const std::string& baseName) {
    std::error_code ec;
    const std::string stem =
        (folder.empty() || folder.back() == '/' ? folder : folder + "/") + baseName;
    fs::remove(stem + ".lst", ec);
    fs::remove(stem + ".obj", ec);
    // Also with HEX off: a HEX file of an earlier run would not match the new object.
    fs::remove(stem + ".hex", ec);
    if (ObjCopyWanted()) fs::remove(stem + "." + options_.ObjCopyExtension, ec);
}

bool Assembler::ObjCopyWanted() const {
    return options_.GenerateObjCopy && IsUsableObjCopyExtension(options_.ObjCopyExtension);
}

bool IsUsableObjCopyExtension(std::string_view extension) {
    if (extension.empty() || extension.size() > 8) return false;
    for (char c : extension)
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '_') return false;
    static constexpr std::string_view kTaken[] = {"asm", "lst", "obj", "hex", "inc", "bas"};
    const std::string lower = LowerText(extension);
    return std::find(std::begin(kTaken), std::end(kTaken), lower) == std::end(kTaken);
}

int Assembler::AssembleGeneratedSource(const std::string& folder, const std::string& baseName) {
    DeleteOutputs(folder, baseName);
    int status = kSilentAssembly;
    AssembleSource(folder, baseName + ".asm", status);
    if (status != 0) DeleteOutputs(folder, baseName);
    return status;
}

int Assembler::AppendFile(const std::string& path, int level, int includeIndex) {
    std::vector<std::string> text;
    ReadLines(path, text);
    if (!text.empty() && text.back().find(kBookmarksComment) != std::string::npos) text.pop_back();
    for (size_t k = 0; k < text.size(); ++k) {
        SourceLine line;
        line.Text = std::move(text[k]);
        line.FileLine = static_cast<int>(k) + 1;
        line.Next = static_cast<int>(session_.Lines.size()) + 1;
        line.IncludeLevel = level;
        line.IncludeIndex = includeIndex;
        session_.Lines.push_back(std::move(line));
    }
    return static_cast<int>(text.size());
}

bool Assembler::ReadMainFile(const std::string& path) {
    session_.Lines.assign(1, SourceLine{});
    std::error_code ec;
    if (!fs::is_regular_file(path, ec) || !std::ifstream(path)) return false;
    session_.MainLineCount = AppendFile(path, 0, 0);
    return true;
}

// ---- Preprocessor ----

std::string Assembler::PreprocessedText(const std::string& orig, const std::string& c,
                                        const std::string& l) {
    const std::string b = BlankQuoted(l);
    const std::string mod = " ;Line modified by ASM preprocessor (";
    if (StartsWith(l, " output ")) return ";Line removed by ASM preprocessor: " + orig;
    if (StartsWith(l, ".org ")) return " " + c + mod + ".ORG correction): " + orig;
    if (StartsWith(l, "org ")) return " " + c + mod + "ORG correction): " + orig;
    if (EndsWith(l, " .org") || EndsWith(l, " org")) {
        const size_t at = LowerText(c).find("org") + 3;
        return c.substr(0, at) + " 0" + c.substr(at) + mod + "ORG correction): " + orig;
    }
    if (StartsWith(l, " *=")) {
        const size_t at = c.find("*=");
        return c.substr(0, at) + ".ORG " + TrimLeft(c.substr(at + 2)) + mod +
               "*= correction): " + orig;
    }
    if (b.find(":=") != std::string::npos) {
        const size_t at = BlankQuoted(c).find(":=");
        return TrimRight(c.substr(0, at)) + " = " + TrimLeft(c.substr(at + 2)) + mod +
               ":= correction): " + orig;
    }
    if (b.find('=') != std::string::npos) {
        std::string t = orig;
        size_t at = t.find('=');
        if (at == std::string::npos) return orig;
        if (at == 0 || t[at - 1] != ' ') t.insert(at++, " ");
        if (at + 1 >= t.size() || t[at + 1] != ' ') t.insert(at + 1, " ");
        return t;
    }
    return orig;
}

std::string Assembler::CheckIncludeArgument(const std::string& argument,
                                            const std::string& includingFile,
                                            std::string& error) const {
    const std::string invalid = "Invalid argument of the INCLUDE directive.";
    const std::string a = TrimText(argument);
    const bool quoted = a.size() >= 3 && ((a.front() == '"' && a.back() == '"') ||
                                          (a.front() == '<' && a.back() == '>'));
    if (!quoted) {
        error = invalid;
        return "";
    }
    const std::string name =
        ResolveIncludeName(a.substr(1, a.size() - 2), session_.Folder, includingFile);
    if (!EndsWith(name, ".inc") && !EndsWith(name, ".asm")) {
        error = ".ASM (or .INC) file extension expected.";
        return "";
    }
    std::error_code ec;
    if (!fs::is_regular_file(name, ec)) {
        error = "File \"" + name + "\" does not exist.";
        return "";
    }
    error.clear();
    return name;
}

void Assembler::TryInclude(int i, int& level) {
    std::string& text = session_.Lines[i].Text;
    const std::string cleaned = TrimText(CleanSourceLine(text));
    const std::string lower = LowerText(cleaned);
    const size_t blank = lower.find(' ');
    if (blank == std::string::npos) return;
    const std::string word = lower.substr(0, blank);
    if (word != ".include" && word != "include" && word != "#include") return;
    std::string error;
    // The file name keeps its case: file systems here tell case apart.
    const std::string path =
        CheckIncludeArgument(cleaned.substr(blank + 1), session_.FileOf(session_.Lines[i]), error);
    if (path.empty()) return;
    session_.IncludeFiles.push_back(path);
    const int first = session_.LineCount() + 1;
    const int added = AppendFile(path, level, static_cast<int>(session_.IncludeFiles.size()));
    if (added == 0) return;
    // These three assignments stand in this order: an include on the main file's
    // last line is overwritten by the third and so adds nothing. The included text
    // goes on with the line that followed the include line: i + 1, except behind
    // the last line of an included file, where that would loop into the new text.
    const int after = session_.Lines[i].Next;
    session_.Lines[i].Next = first;
    session_.Lines[session_.LineCount()].Next = after;
    if (session_.MainLineCount > 0)
        session_.Lines[session_.MainLineCount].Next = session_.LineCount() + 1;
}

void Assembler::PreprocessSource() {
    const int limit = settings_.GetSettingInt("Assembler Include Nesting Level Limit", 10);
    int level = 1;
    int levelEnd = session_.LineCount();
    for (int i = 1; i <= session_.LineCount(); ++i) {
        SourceLine& line = session_.Lines[i];
        const std::string c = CleanSourceLine(protection_.UnprotectLine(line.Text));
        const std::string l = CollapseBlanks(LowerText(c));
        line.Text = PreprocessedText(line.Text, c, l);
        if (level <= limit && BlankQuoted(l).find("include") != std::string::npos)
            TryInclude(i, level);
        if (i == levelEnd) {
            ++level;
            levelEnd = session_.LineCount();
        }
    }
    protection_.Reset();
}

// ---- Passes ----

// Walks the lines along Next. A walk never takes more steps than there are lines,
// so a chain of includes that loops back cannot hang the assembler.
// The walk takes at most as many steps as there are lines, so no chain of Next
// values can hold the assembler in a loop.
std::vector<int> Assembler::WalkOrder() const {
    std::vector<int> order;
    const int end = session_.LineCount() + 1;
    for (int i = 1; i >= 1 && i < end && static_cast<int>(order.size()) < end;
         i = session_.Lines[i].Next)
        order.push_back(i);
    return order;
}

void Assembler::Pass1() {
    protection_.Reset();
    for (int i : WalkOrder()) {
        Progress("Performing pass 1.", "Line " + std::to_string(i), 0);
        Pass1Line(i);
    }
}

void Assembler::Pass2() {
    for (int i : WalkOrder()) {
        Progress("Performing pass 2.", "Line " + std::to_string(i), 0);
        Pass2Line(i);
    }
}

void Assembler::Pass1Line(int index) {
    SourceLine& line = session_.Lines[index];
    line.ErrorText.clear();
    line.ErrorSeverity = 0;
    line.StatementKey.clear();
    line.Operand1.clear();
    line.Operand2.clear();
    line.Operand3.clear();
    line.OpcodeText.clear();
    line.Address = session_.ProgramCounter;
    line.ReservedBytes = 0;

    std::string t = CleanSourceLine(protection_.UnprotectLine(line.Text));
    std::string label;
    if (!t.empty()) {
        const std::string upper = UpperText(t);
        if (upper.find(" EQU ") != std::string::npos || upper.find(" .EQU ") != std::string::npos ||
            BlankQuoted(t).find(" = ") != std::string::npos)
            t = TrimLeft(t);
        const char first = UpperText(t.substr(0, 1))[0];
        if ((first >= 'A' && first <= 'Z') || first == '_') {
            const size_t colon = BlankQuoted(t).find(':');
            if (colon != std::string::npos && colon + 1 < t.size() && t[colon - 1] != ' ' &&
                t[colon + 1] != ' ')
                t.insert(colon + 1, " ");
            const size_t blank = t.find(' ');
            label = UpperText(t.substr(0, blank));
            t = blank == std::string::npos ? "" : t.substr(blank);
            if (!label.empty() && label.back() == ':') label.pop_back();
            std::string error;
            if (session_.symbols.FindLabel(label))
                error = "Duplicate label.";
            else if (IsInstructionMnemonic(label, options_.UnofficialInstructions))
                error = "Instruction in label column.";
            else if (IsReservedKeyword(label))
                error = "Reserved keyword in label column.";
            if (!error.empty()) {
                MarkError(line, error);
                return;
            }
            session_.symbols.Add(label, kUndefinedValue, index);
        }
        t = TrimText(t);
        const size_t blank = t.find(' ');
        std::string word = UpperText(t.substr(0, blank));
        const std::string rest = blank == std::string::npos ? "" : TrimText(t.substr(blank));
        word = std::string(CanonicalDirective(word));
        std::string op1 = rest, op2, op3;
        if (size_t comma = FirstCommaOutsideQuotes(rest); comma != std::string::npos) {
            op1 = TrimText(rest.substr(0, comma));
            std::string tail = rest.substr(comma + 1);
            op2 = tail;
            if (size_t c2 = FirstCommaOutsideQuotes(tail); c2 != std::string::npos) {
                op2 = tail.substr(0, c2);
                op3 = TrimText(tail.substr(c2 + 1));
            }
            op2 = TrimText(op2);
        }
        if (word == "DB" || word == "DW") {
            op1 = RewriteDataList(rest);
            op2.clear();
            op3.clear();
        }
        if (op1.empty() && op2.empty()) {
            line.StatementKey = word;
        } else if (!BuildStatementKey(line, word, op1, op2, op3)) {
            return;
        }
    }
    if (!label.empty()) {
        const int symbol = session_.symbols.FindLabel(label);
        if (line.StatementKey == "EQU *") {
            line.Operand2 = label;
            const int v = Evaluate(line.Operand1, true);
            if (v != kExpressionError) session_.symbols.SetValue(symbol, v);
        } else {
            session_.symbols.SetValue(symbol, session_.ProgramCounter);
        }
    }
    MeasureStatement(line);
    SizeControl(line);
}

bool Assembler::BuildStatementKey(SourceLine& line, std::string word, std::string op1,
                                  std::string op2, std::string op3) {
    std::string key = word + " ";
    if (word == "EQU" || word == "ORG") {
        key += "*";
    } else if (word == "SET" || word == "BIT" || word == "RES" || word == "IM") {
        const int v = Evaluate(op1, false);
        if (v == kExpressionError) {
            MarkError(line, "Invalid argument of the instruction. " + Quoted(op1));
            return false;
        }
        key += std::to_string(v);
        op1.clear();
    } else {
        key += AnalyseOperand(op1);
    }
    if (!op2.empty()) {
        key += ",";
        if (key == "OUT (C),") {
            key += UpperText(op2);
            op2.clear();
        } else {
            key += AnalyseOperand(op2);
        }
    }
    if (op1.empty() && !op2.empty()) std::swap(op1, op2);
    if (!op3.empty()) {
        const std::string u = UpperText(op3);
        key += ",";
        if (u.size() == 1 && std::string("ABCDEHL").find(u[0]) != std::string::npos) {
            key += u;
            op3.clear();
        } else {
            key += "*";
        }
    }
    line.StatementKey = key;
    line.Operand1 = op1;
    line.Operand2 = op2;
    line.Operand3 = op3;
    return true;
}

void Assembler::MeasureStatement(SourceLine& line) {
    if (line.StatementKey.empty()) return;
    const VocabularyEntry* e = Vocabulary::Instance().Find(line.StatementKey);
    if (!e) {
        MarkError(line, "Unrecognized instruction/syntax. " + Quoted(WithArgs(line.StatementKey)));
        return;
    }
    if (e->unofficial && !options_.UnofficialInstructions) {
        MarkError(line, "Unofficial instruction. " + Quoted(WithArgs(line.StatementKey)));
        return;
    }
    int& pc = session_.ProgramCounter;
    switch (e->directive) {
        case Directive::None: pc += static_cast<int>(e->pattern.size()); break;
        case Directive::Org: {
            const int v = Evaluate(line.Operand1, false);
            if (v >= 0 && v <= 65535)
                pc = v;
            else
                MarkError(line, "Invalid argument of the ORG directive. " + Quoted(line.Operand1) +
                                    " (0-FFFFh value expected)");
            break;
        }
        case Directive::Db: pc += static_cast<int>(DataElements(line.Operand1).size()); break;
        case Directive::Dw: pc += 2 * static_cast<int>(DataElements(line.Operand1).size()); break;
        case Directive::Ds:
        case Directive::DsFill: {
            const int v = Evaluate(line.Operand1, false);
            if (v != kExpressionError && v >= 0 && static_cast<long long>(pc) + v < 0x10000) {
                pc += v;
                line.ReservedBytes = v;
            } else {
                MarkError(line, DsErrorText(line));
            }
            break;
        }
        case Directive::Include: {
            std::string error;
            CheckIncludeArgument(line.Operand1, session_.FileOf(line), error);
            if (!error.empty()) MarkError(line, error);
            break;
        }
        case Directive::Equ:
        case Directive::End: break;
    }
}

void Assembler::SizeControl(SourceLine& line) {
    int& pc = session_.ProgramCounter;
    int& state = session_.SizeState;
    if (pc > 0x10000 && state < 2) state = 2;
    if (pc == 0x10000 && state < 2) ++state;
    if (pc > 65535) pc = 65535;
    if (state == 2) {
        state = 3;
        line.ErrorText = "The size of the generated code is greater than 64K.";
        line.ErrorSeverity = 2;
        ++session_.ErrorCount;
    }
}

void Assembler::Pass2Line(int index) {
    SourceLine& line = session_.Lines[index];
    session_.ProgramCounter = line.Address;
    if (line.ErrorSeverity == 1) return;
    const std::string& key = line.StatementKey;
    if (key == "EQU *") {
        const int v = Evaluate(line.Operand1, false);
        if (v == kExpressionError) {
            MarkError(line, "Invalid argument of the EQU directive. " + Quoted(line.Operand1));
            return;
        }
        const int symbol = session_.symbols.FindLabel(line.Operand2);
        if (line.Operand2.empty() || !symbol) {
            MarkError(line, "Label missing. " + Quoted(line.Operand2));
            return;
        }
        session_.symbols.SetValue(symbol, v);
    }
    int values[3] = {0, 0, 0};
    if (key != "DW *" && key != "DB *" && key != "EQU *" && key != "INCLUDE *") {
        const std::string* ops[3] = {&line.Operand1, &line.Operand2, &line.Operand3};
        for (int k = 0; k < 3; ++k) {
            if (ops[k]->empty()) continue;
            values[k] = Evaluate(*ops[k], false);
            if (values[k] == kExpressionError) {
                MarkError(line, "Invalid argument of the instruction. " + Quoted(*ops[k]));
                return;
            }
        }
    }
    if (line.ErrorSeverity == 0) EncodeStatement(line, values);
}

bool Assembler::CheckOperand(SourceLine& line, OperandClass cls, int& value,
                             const std::string& text) {
    // Wide enough for an address far below the program counter.
    long long v = value;
    if (cls == OperandClass::Relative) {
        std::string head = text.substr(0, text.find('+'));
        head = TrimText(head.substr(0, head.find('-')));
        std::string compact;
        for (char c : UpperText(text))
            if (c != ' ') compact += c;
        bool address = session_.symbols.FindLabel(head) != 0;
        for (const char* p : {"*+", "*-", "$+", "$-", "PC+", "PC-"})
            if (StartsWith(compact, p)) address = true;
        if (address) v -= session_.ProgramCounter;
    }
    const ClassRule rule = RuleOf(cls);
    bool ok = v >= rule.min && v <= rule.max;
    if (cls == OperandClass::Restart) ok = ok && v % 8 == 0;
    if (!ok) {
        const std::string shown =
            cls == OperandClass::Relative ? std::to_string(v) : HexAndDecimal(v);
        MarkError(line, "Invalid argument of the instruction. " + Quoted(shown) + rule.words);
        value = 0;
        return false;
    }
    value = static_cast<int>(v);
    switch (cls) {
        case OperandClass::Byte:
        case OperandClass::Displacement:
            if (value < 0) value += 256;
            break;
        case OperandClass::Word:
            if (value < 0) value += 65536;
            break;
        case OperandClass::Relative:
            if (value < 0) value += 256;
            value = (value - 2) & 0xFF;
            break;
        case OperandClass::Restart: value += 0xC7; break;
        case OperandClass::Address: break;
    }
    return true;
}

void Assembler::EncodeData(SourceLine& line, bool words) {
    std::string text;
    for (const std::string& element : DataElements(line.Operand1)) {
        int v = element.empty() ? 0 : Evaluate(element, false);
        const bool ok = words ? (v >= -32768 && v <= 65535) : (v >= -128 && v <= 255);
        if (!ok) {
            MarkError(line, std::string("Invalid argument of the ") + (words ? "DW" : "DB") +
                                " directive. " + Quoted(element) +
                                (words ? " (-8000-FFFFh (-32768-65535) value expected)"
                                       : " (-80-FFh (-128-255) value expected)"));
            return;
        }
        AppendByte(text, v);
        if (words) AppendByte(text, v >> 8);
        session_.ProgramCounter += words ? 2 : 1;
    }
    line.OpcodeText = text;
}

void Assembler::EncodeStatement(SourceLine& line, const int values[3]) {
    if (line.StatementKey.empty()) return;
    const VocabularyEntry* e = Vocabulary::Instance().Find(line.StatementKey);
    if (!e) return;
    switch (e->directive) {
        case Directive::Db: EncodeData(line, false); return;
        case Directive::Dw: EncodeData(line, true); return;
        case Directive::Ds:
        case Directive::DsFill: {
            // A symbol that got its value only in pass 2 can change the count; the
            // bytes must fill what pass 1 reserved, no more and no less.
            if (values[0] != line.ReservedBytes) {
                MarkError(line, DsErrorText(line));
                return;
            }
            int fill = 0;
            if (e->directive == Directive::DsFill) {
                fill = values[1];
                if (!CheckOperand(line, OperandClass::Byte, fill, line.Operand2)) return;
            }
            std::string text;
            text.reserve(static_cast<size_t>(std::max(values[0], 0)) * 3);
            for (int k = 0; k < values[0]; ++k) AppendByte(text, fill);
            line.OpcodeText = text;
            return;
        }
        case Directive::None: break;
        default: return;
    }
    const std::string* texts[2] = {&line.Operand1, &line.Operand2};
    int operand[2] = {values[0], values[1]};
    bool ok = true;
    for (size_t k = 0; k < e->classes.size() && k < 2; ++k)
        ok = CheckOperand(line, e->classes[k], operand[k], *texts[k]) && ok;
    if (!ok) return;
    std::string text;
    for (int p : e->pattern) {
        switch (p) {
            case kOp1Low: AppendByte(text, operand[0]); break;
            case kOp1High: AppendByte(text, operand[0] >> 8); break;
            case kOp2Low: AppendByte(text, operand[1]); break;
            case kOp2High: AppendByte(text, operand[1] >> 8); break;
            default: AppendByte(text, p); break;
        }
    }
    line.OpcodeText = text;
}

std::string AssemblyFailureText(int errorCount) {
    return "Assembly was not successful.\nYour assembler source contains " +
           std::to_string(errorCount) + " errors.\n\n";
}

std::string Assembler::FormatAssemblerErrors() const {
    const auto& list = session_.ErrorList;
    std::string out = list.size() <= 10 ? "Here is the list of assembler errors:"
                                        : "Here is the list of the first 10 assembler errors:";
    out += "\n";
    int shown = 0;
    for (int severity : {2, 1})
        for (const AssemblerError& e : list) {
            if (e.Severity != severity || shown == 10) continue;
            if (!e.File.empty()) out += "<" + e.File + ">: ";
            out += e.Text + "\n";
            ++shown;
        }
    return out;
}

std::string DiagnosticLines(const AssemblySession& session, const std::string& sourcePath) {
    std::string text;
    for (const AssemblerError& e : session.ErrorList) {
        const std::size_t at = e.Text.find("Error: ");
        text += (e.File.empty() ? sourcePath : e.File) + ":" + std::to_string(e.FileLine) +
                ": error: " + (at == std::string::npos ? e.Text : e.Text.substr(at + 7)) + "\n";
    }
    return text;
}

}  // namespace mb
