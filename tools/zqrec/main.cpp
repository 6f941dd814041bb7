// zqrec: the command line, record framing, output formats and reports.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "help.h"
#include "zq/dtype.h"
#include "zq/notifier.h"
#include "zq/options.h"
#include "zq/zqstring.h"
#include "zqrec.h"

#ifndef ZQREC_VERSION
#define ZQREC_VERSION "0"
#endif

namespace zqrec {
namespace {

// ---- command-line options ---------------------------------------------------

struct Options {
  std::string output;
  std::string format = "csv";
  std::string encoding;
  bool rdw = false;
  bool bdw = false;
  long max_errors = 0;
  long block_size = 32760;
  bool quiet = false;
  std::vector<std::string> args;
};

void Usage(const char* cmd, const std::string& msg) {
  std::fprintf(stderr, "zqrec%s%s: %s\nTry \"zqrec %s--help\" for more information.\n",
               cmd ? " " : "", cmd ? cmd : "", msg.c_str(),
               cmd ? (std::string(cmd) + " ").c_str() : "");
}

bool ParseCount(const char* text, long* out) {
  char* end = nullptr;
  errno = 0;
  const long v = std::strtol(text, &end, 10);
  if (*text == '\0' || *end != '\0' || errno != 0 || v < 0) return false;
  *out = v;
  return true;
}

// Turns GNU-style arguments into the short-option form the library's getopt
// reads: long options (exact or an unambiguous prefix, "--name=value" or
// "--name value") become their letters, and operands move after "--" so
// that options may follow them. Returns false after printing a message.
bool Normalise(const CommandHelp& cmd, int argc, char** argv, std::vector<std::string>* out) {
  std::vector<std::string> opts, operands;
  auto find_short = [&](char c) -> const OptionHelp* {
    for (const OptionHelp* o = cmd.options; o->long_name; ++o) {
      if (o->short_name == c) return o;
    }
    return nullptr;
  };
  for (int i = 0; i < argc; ++i) {
    const std::string a = argv[i];
    if (a == "--") {
      for (++i; i < argc; ++i) operands.push_back(argv[i]);
      break;
    }
    if (a.compare(0, 2, "--") == 0) {
      const size_t eq = a.find('=');
      const std::string name = a.substr(2, eq == std::string::npos ? std::string::npos : eq - 2);
      const OptionHelp* match = nullptr;
      int matches = 0;
      for (const OptionHelp* o = cmd.options; o->long_name; ++o) {
        if (name == o->long_name) {
          match = o;
          matches = 1;
          break;
        }
        if (std::strncmp(o->long_name, name.c_str(), name.size()) == 0) {
          match = o;
          ++matches;
        }
      }
      if (matches != 1) {
        Usage(cmd.name, (matches == 0 ? "unknown option --" : "ambiguous option --") + name);
        return false;
      }
      opts.push_back(std::string("-") + match->short_name);
      if (match->arg) {
        if (eq != std::string::npos) {
          opts.push_back(a.substr(eq + 1));
        } else if (i + 1 < argc) {
          opts.push_back(argv[++i]);
        } else {
          Usage(cmd.name, std::string("option --") + match->long_name + " needs an argument " + match->arg);
          return false;
        }
      } else if (eq != std::string::npos) {
        Usage(cmd.name, std::string("option --") + match->long_name + " takes no argument");
        return false;
      }
      continue;
    }
    if (a.size() > 1 && a[0] == '-') {
      // A cluster of short options; the one that takes an argument ends it.
      for (size_t k = 1; k < a.size(); ++k) {
        const OptionHelp* o = find_short(a[k]);
        if (o == nullptr) {
          Usage(cmd.name, std::string("unknown option -") + a[k]);
          return false;
        }
        opts.push_back(std::string("-") + a[k]);
        if (o->arg) {
          if (k + 1 < a.size()) {
            opts.push_back(a.substr(k + 1));
          } else if (i + 1 < argc) {
            opts.push_back(argv[++i]);
          } else {
            Usage(cmd.name, std::string("option -") + a[k] + " needs an argument " + o->arg);
            return false;
          }
          break;
        }
      }
      continue;
    }
    operands.push_back(a);
  }
  out->push_back(std::string("zqrec ") + cmd.name);
  out->insert(out->end(), opts.begin(), opts.end());
  out->push_back("--");
  out->insert(out->end(), operands.begin(), operands.end());
  return true;
}

// Parses a command's arguments with getopt; returns -1 to go on, else the
// exit code.
int ParseOptions(const CommandHelp& cmd, int argc, char** argv, Options* o) {
  std::vector<std::string> norm;
  if (!Normalise(cmd, argc, argv, &norm)) return kExitUsage;
  std::string optstring = ":";
  for (const OptionHelp* h = cmd.options; h->long_name; ++h) {
    optstring += h->short_name;
    if (h->arg) optstring += ':';
  }
  std::vector<char*> av;
  for (std::string& s : norm) av.push_back(&s[0]);
  av.push_back(nullptr);
  optind = 1;
  opterr = 0;
  int c;
  while ((c = getopt(static_cast<int>(av.size() - 1), av.data(), optstring.c_str())) != -1) {
    switch (c) {
      case 'h':
        PrintHelp(&cmd);
        return kExitOk;
      case 'o': o->output = optarg; break;
      case 'f':
        o->format = optarg;
        if (o->format != "csv" && o->format != "jsonl") {
          Usage(cmd.name, "unknown format \"" + o->format + "\" (expected csv or jsonl)");
          return kExitUsage;
        }
        break;
      case 'e': o->encoding = optarg; break;
      case 'r': o->rdw = true; break;
      case 'b': o->bdw = o->rdw = true; break;
      case 'q': o->quiet = true; break;
      case 'm':
        if (!ParseCount(optarg, &o->max_errors)) {
          Usage(cmd.name, std::string("--max-errors needs a count, not \"") + optarg + "\"");
          return kExitUsage;
        }
        break;
      case 'B':
        if (!ParseCount(optarg, &o->block_size) || o->block_size < 8 || o->block_size > 0x7FFFFFFF) {
          Usage(cmd.name, std::string("--block-size needs a size in bytes, not \"") + optarg + "\"");
          return kExitUsage;
        }
        break;
      default:
        Usage(cmd.name, std::string("option -") + static_cast<char>(optopt) +
                            (c == ':' ? " needs an argument" : " is not known"));
        return kExitUsage;
    }
  }
  for (int i = optind; i < static_cast<int>(av.size() - 1); ++i) o->args.push_back(av[i]);
  return -1;
}

// ---- input and output ------------------------------------------------------

// The bytes of an input file: mapped when it is a regular file, so that a
// large file costs no copy and no memory beyond the page cache; read
// otherwise (pipes, standard input).
class InputFile {
 public:
  ~InputFile() {
    if (map_ != nullptr) munmap(map_, size_);
  }
  bool Open(const std::string& path, std::string* error) {
    const int fd = path == "-" ? 0 : open(path.c_str(), O_RDONLY);
    if (fd < 0) {
      *error = path + ": cannot open: " + std::strerror(errno);
      return false;
    }
    struct stat st;
    if (fd != 0 && fstat(fd, &st) == 0 && S_ISREG(st.st_mode) && st.st_size > 0) {
      size_ = static_cast<size_t>(st.st_size);
      void* m = mmap(nullptr, size_, PROT_READ, MAP_PRIVATE, fd, 0);
      if (m != MAP_FAILED) {
        map_ = m;
        madvise(map_, size_, MADV_SEQUENTIAL);
        close(fd);
        view_ = std::string_view(static_cast<const char*>(map_), size_);
        return true;
      }
    }
    const bool ok = ReadAll(fd, path, &owned_, error);
    if (fd != 0) close(fd);
    view_ = owned_;
    return ok;
  }
  std::string_view data() const { return view_; }

 private:
  static bool ReadAll(int fd, const std::string& path, std::string* data, std::string* error) {
    char buf[1 << 16];
    for (;;) {
      const ssize_t n = read(fd, buf, sizeof buf);
      if (n == 0) return true;
      if (n < 0) {
        if (errno == EINTR) continue;
        *error = path + ": read error: " + std::strerror(errno);
        return false;
      }
      data->append(buf, static_cast<size_t>(n));
    }
  }
  void* map_ = nullptr;
  size_t size_ = 0;
  std::string owned_;
  std::string_view view_;
};

bool ReadAll(const std::string& path, std::string* data, std::string* error) {
  const int fd = path == "-" ? 0 : open(path.c_str(), O_RDONLY);
  if (fd < 0) {
    *error = path + ": cannot open: " + std::strerror(errno);
    return false;
  }
  off_t size = lseek(fd, 0, SEEK_END);
  if (size > 0) {
    lseek(fd, 0, SEEK_SET);
    data->reserve(static_cast<size_t>(size));
  }
  char buf[1 << 16];
  for (;;) {
    const ssize_t n = read(fd, buf, sizeof buf);
    if (n == 0) break;
    if (n < 0) {
      if (errno == EINTR) continue;
      *error = path + ": read error: " + std::strerror(errno);
      if (fd != 0) close(fd);
      return false;
    }
    data->append(buf, static_cast<size_t>(n));
  }
  if (fd != 0) close(fd);
  return true;
}

class Writer {
 public:
  bool Open(const std::string& path, std::string* error) {
    path_ = path.empty() ? "standard output" : path;
    if (path.empty() || path == "-") {
      fd_ = 1;
      return true;
    }
    fd_ = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
    if (fd_ < 0) {
      *error = path + ": cannot create: " + std::strerror(errno);
      return false;
    }
    return true;
  }
  std::string& buf() { return buf_; }
  void MaybeFlush() {
    if (buf_.size() >= (1u << 20)) Flush();
  }
  void Flush() {
    size_t done = 0;
    while (ok_ && done < buf_.size()) {
      const ssize_t n = write(fd_, buf_.data() + done, buf_.size() - done);
      if (n < 0 && errno == EINTR) continue;
      if (n <= 0) {
        error_ = path_ + ": write error: " + std::strerror(errno);
        ok_ = false;
        break;
      }
      done += static_cast<size_t>(n);
    }
    buf_.clear();
  }
  bool Close() {
    Flush();
    if (fd_ > 1 && close(fd_) != 0 && ok_) {
      error_ = path_ + ": write error: " + std::strerror(errno);
      ok_ = false;
    }
    return ok_;
  }
  bool ok() const { return ok_; }
  const std::string& error() const { return error_; }

 private:
  int fd_ = -1;
  bool ok_ = true;
  std::string path_;
  std::string buf_;
  std::string error_;
};

// ---- progress and summary ---------------------------------------------------

// Progress on a terminal: percent of the input, records per second and the
// time left, from the notifier's once-a-second rate (units: KiB of input).
class Progress : public ZQNotifier {
 public:
  Progress(bool show, size_t bytes) : show_(show) {
    if (show_) StartNotification(static_cast<long>(bytes / 1024 + 1));
  }
  void Update(size_t bytes_done, long records) {
    if (!show_ || (records & 0x3FFF) != 0) return;
    const long kib = static_cast<long>(bytes_done / 1024);
    NVNotify(kib, 0);
    if (Rate() <= 0 || Updates() == drawn_) return;
    drawn_ = Updates();
    const double per_kib = kib > 0 ? static_cast<double>(records) / kib : 0;
    const long left = (Total() - kib) / Rate();
    std::fprintf(stderr, "\rzqrec: %3ld%%  %.0f records/s  %ld:%02ld left ",
                 kib * 100 / (Total() > 0 ? Total() : 1), Rate() * per_kib, left / 60, left % 60);
    std::fflush(stderr);
  }
  void Finish() {
    if (!show_) return;
    if (drawn_ > 0) std::fprintf(stderr, "\r%50s\r", "");
    EndNotification(0);
  }

 private:
  bool show_;
  int drawn_ = 0;
};

double Seconds(std::chrono::steady_clock::time_point since) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

void Summary(const char* verb, long records, long fields, long errors, double secs,
             const char* error_word) {
  const double s = secs > 1e-6 ? secs : 1e-6;
  std::fprintf(stderr,
               "zqrec: %s %ld records (%ld fields), %ld %s, in %.3f s: %.0f records/s, %.0f fields/s\n",
               verb, records, fields, errors, error_word, secs, records / s, fields / s);
}

// ---- record framing ---------------------------------------------------------

struct Record {
  size_t offset;  // of the record's data in the file
  size_t length;
};

// The records of the input: fixed-length ones are computed from their
// number, so that a file of any size needs no table; variable-length ones
// are listed.
class Records {
 public:
  void SetFixed(size_t length, size_t file_size) {
    fixed_ = length;
    file_size_ = file_size;
  }
  void push_back(const Record& r) { list_.push_back(r); }
  size_t size() const {
    return fixed_ != 0 ? (file_size_ + fixed_ - 1) / fixed_ : list_.size();
  }
  Record operator[](size_t i) const {
    if (fixed_ == 0) return list_[i];
    const size_t off = i * fixed_;
    return {off, off + fixed_ <= file_size_ ? fixed_ : file_size_ - off};
  }

 private:
  size_t fixed_ = 0;
  size_t file_size_ = 0;
  std::vector<Record> list_;
};

unsigned Be16(const unsigned char* p) { return static_cast<unsigned>(p[0]) << 8 | p[1]; }

// Splits the input into records; false with `error` at a bad descriptor word
// (everything before it is kept).
bool Frame(std::string_view data, const Layout& layout, const Options& o,
           Records* recs, std::string* error) {
  const unsigned char* p = reinterpret_cast<const unsigned char*>(data.data());
  const size_t size = data.size();
  if (!o.rdw) {
    recs->SetFixed(static_cast<size_t>(layout.record_length), size);
    return true;
  }
  auto records_in = [&](size_t off, size_t end) -> bool {
    while (off < end) {
      if (end - off < 4) {
        *error = "byte offset " + std::to_string(off) + ": " + std::to_string(end - off) +
                 " bytes left, too few for a record descriptor word";
        return false;
      }
      const unsigned len = Be16(p + off);
      if (len < 4 || p[off + 2] != 0 || p[off + 3] != 0 || off + len > end) {
        *error = "byte offset " + std::to_string(off) + ": invalid record descriptor word " +
                 HexBytes(p + off, 4) + (off + len > end && len >= 4
                                             ? " (its length runs past the end of the " +
                                                   std::string(o.bdw ? "block" : "file") + ")"
                                             : "");
        return false;
      }
      recs->push_back({off + 4, len - 4u});
      off += len;
    }
    return true;
  };
  if (!o.bdw) return records_in(0, size);
  size_t off = 0;
  while (off < size) {
    if (size - off < 4) {
      *error = "byte offset " + std::to_string(off) + ": too few bytes for a block descriptor word";
      return false;
    }
    size_t len;
    if (p[off] & 0x80) {  // extended form: a 31-bit length in four bytes
      len = (static_cast<size_t>(p[off] & 0x7F) << 24) | static_cast<size_t>(p[off + 1]) << 16 |
            static_cast<size_t>(p[off + 2]) << 8 | p[off + 3];
    } else {
      len = Be16(p + off);
      if (p[off + 2] != 0 || p[off + 3] != 0) len = 0;
    }
    if (len < 4 || off + len > size) {
      *error = "byte offset " + std::to_string(off) + ": invalid block descriptor word " +
               HexBytes(p + off, 4);
      return false;
    }
    if (!records_in(off + 4, off + len)) return false;
    off += len;
  }
  return true;
}

// Explains a file whose length is not a whole number of records, and spots
// the marks of a text-mode transfer.
void ExplainLength(const std::string& path, std::string_view data, const Layout& layout) {
  const size_t len = static_cast<size_t>(layout.record_length);
  const size_t size = data.size();
  std::fprintf(stderr,
               "zqrec: %s: the file is %zu bytes long, which is not a multiple of the record "
               "length %zu: %zu whole records and %zu bytes left over.\n",
               path.c_str(), size, len, size / len, size % len);
  size_t crlf = 0, lf = 0;
  for (size_t i = 0; i < size; ++i) {
    if (data[i] == '\n') {
      if (i > 0 && data[i - 1] == '\r') {
        ++crlf;
      } else {
        ++lf;
      }
    }
  }
  if (crlf > 0 && (size - 2 * crlf) % len == 0) {
    std::fprintf(stderr,
                 "zqrec: %s: without its %zu CR/LF pairs the file would hold exactly %zu "
                 "records: it looks as if it went through a text-mode transfer that inserted "
                 "line ends. Transfer it again in binary mode.\n",
                 path.c_str(), crlf, (size - 2 * crlf) / len);
  } else if (lf > 0 && (size - lf - crlf) % len == 0 && crlf == 0) {
    std::fprintf(stderr,
                 "zqrec: %s: without its %zu line feeds the file would hold exactly %zu "
                 "records: it looks as if it went through a text-mode transfer that inserted "
                 "line ends. Transfer it again in binary mode.\n",
                 path.c_str(), lf, (size - lf) / len);
  }
}

// Warns when text fields declared in EBCDIC hold ASCII spaces and no EBCDIC
// ones: the file has probably been translated to ASCII on the way.
void CheckEbcdic(const std::string& path, std::string_view data, const Layout& layout,
                 const Records& recs) {
  if (!layout.any_ebcdic) return;
  size_t ascii = 0, ebcdic = 0;
  for (size_t r = 0; r < recs.size() && r < 1000; ++r) {
    for (const Field& f : layout.fields) {
      if (f.kind != Kind::kText || f.cp.ebcdic == 0) continue;
      if (static_cast<size_t>(f.offset + f.length) > recs[r].length) continue;
      for (int i = 0; i < f.length; ++i) {
        const unsigned char c = static_cast<unsigned char>(data[recs[r].offset + f.offset + i]);
        ascii += c == 0x20;
        ebcdic += c == 0x40;
      }
    }
  }
  if (ascii > 0 && ascii > 4 * ebcdic) {
    std::fprintf(stderr,
                 "zqrec: %s: the text fields declared in EBCDIC hold %zu ASCII spaces (0x20) "
                 "and only %zu EBCDIC ones (0x40): it looks as if the file was translated from "
                 "EBCDIC to ASCII by a text-mode transfer. Transfer it again in binary mode.\n",
                 path.c_str(), ascii, ebcdic);
  }
}

// ---- output formats ---------------------------------------------------------

void AppendCsv(const std::string& v, std::string* out) {
  if (v.find_first_of(",\"\r\n") == std::string::npos) {
    out->append(v);
    return;
  }
  out->push_back('"');
  for (char c : v) {
    if (c == '"') out->push_back('"');
    out->push_back(c);
  }
  out->push_back('"');
}

void AppendJsonString(const std::string& v, std::string* out) {
  out->push_back('"');
  for (unsigned char c : v) {
    switch (c) {
      case '"': out->append("\\\""); break;
      case '\\': out->append("\\\\"); break;
      case '\n': out->append("\\n"); break;
      case '\r': out->append("\\r"); break;
      case '\t': out->append("\\t"); break;
      default:
        if (c < 0x20 || c == 0x7F) {
          char buf[8];
          std::snprintf(buf, sizeof buf, "\\u%04x", c);
          out->append(buf);
        } else {
          out->push_back(static_cast<char>(c));
        }
    }
  }
  out->push_back('"');
}

// ---- shared set-up ----------------------------------------------------------

int Prepare(const Options& o, const std::string& layout_path, Layout* layout) {
  std::string error;
  if (!LoadLayout(layout_path, layout, &error)) {
    std::fprintf(stderr, "zqrec: %s\n", error.c_str());
    return error.find(": cannot open the layout") != std::string::npos ? kExitIo : kExitUsage;
  }
  CodePage cp;
  if (!o.encoding.empty() && !FindCodePage(o.encoding, &cp, &error)) {
    std::fprintf(stderr, "zqrec: --encoding: %s\n", error.c_str());
    return kExitUsage;
  }
  ApplyDefaultCodePage(layout, cp);
  return -1;
}

std::string FieldWhere(const Field& f) {
  return "field \"" + f.name + "\" (" + f.type.TypeName() + ", record bytes " +
         std::to_string(f.offset) + "-" + std::to_string(f.offset + f.length - 1) + ")";
}

// Reads the input and frames it; returns -1 to go on, else the exit code.
int LoadRecords(const Options& o, const std::string& path, const Layout& layout,
                InputFile* in, Records* recs, bool* frame_error) {
  std::string error;
  if (!in->Open(path, &error)) {
    std::fprintf(stderr, "zqrec: %s\n", error.c_str());
    return kExitIo;
  }
  const std::string_view data = in->data();
  if (!o.rdw && data.size() % static_cast<size_t>(layout.record_length) != 0) {
    ExplainLength(path, data, layout);
  }
  *frame_error = false;
  if (!Frame(data, layout, o, recs, &error)) {
    std::fprintf(stderr, "zqrec: %s: %s\n", path.c_str(), error.c_str());
    *frame_error = true;
  }
  CheckEbcdic(path, data, layout, *recs);
  return -1;
}

// A layout and the framed records of an input file, as decode and verify use
// them.
struct RecordSource {
  Layout layout;
  InputFile in;
  Records recs;
  bool frame_error = false;
};

// Checks the arguments (a layout and an input file), loads the layout and
// frames the input; returns -1 to go on, else the exit code.
int OpenRecords(const Options& o, const char* command, RecordSource* src) {
  if (o.args.size() != 2) {
    Usage(command, "expected a layout file and an input file");
    return kExitUsage;
  }
  const int rc = Prepare(o, o.args[0], &src->layout);
  if (rc >= 0) return rc;
  return LoadRecords(o, o.args[1], src->layout, &src->in, &src->recs, &src->frame_error);
}

bool ShortRecord(const std::string& path, const Layout& layout, const Record& r, long number) {
  if (r.length >= static_cast<size_t>(layout.fields_length)) return false;
  std::fprintf(stderr,
               "zqrec: %s: record %ld at byte offset %zu is short: %zu bytes, but the layout's "
               "fields take %d\n",
               path.c_str(), number, r.offset, r.length, layout.fields_length);
  return true;
}

// ---- commands ---------------------------------------------------------------

int Decode(const Options& o) {
  RecordSource src;
  const int rc = OpenRecords(o, "decode", &src);
  if (rc >= 0) return rc;
  const auto& [layout, in, recs, frame_error] = src;
  const std::string& path = o.args[1];
  const std::string_view data = in.data();
  Writer out;
  std::string error;
  if (!out.Open(o.output, &error)) {
    std::fprintf(stderr, "zqrec: %s\n", error.c_str());
    return kExitIo;
  }
  const auto start = std::chrono::steady_clock::now();
  const bool csv = o.format == "csv";
  std::string& buf = out.buf();
  std::vector<std::string> json_names;
  if (csv) {
    for (size_t i = 0; i < layout.fields.size(); ++i) {
      if (i) buf.push_back(',');
      AppendCsv(layout.fields[i].name, &buf);
    }
    buf.append("\r\n");
  } else {
    for (const Field& f : layout.fields) {
      std::string n;
      AppendJsonString(f.name, &n);
      json_names.push_back(n + ":");
    }
  }
  Progress progress(!o.quiet && isatty(2), data.size());
  long errors = frame_error ? 1 : 0, records = 0, fields = 0;
  ZQString rec;
  std::string value, row;
  for (size_t r = 0; r < recs.size() && errors <= o.max_errors; ++r) {
    const long number = static_cast<long>(r) + 1;
    if (ShortRecord(path, layout, recs[r], number)) {
      ++errors;
      continue;
    }
    rec.CopyN(data.data() + recs[r].offset, layout.fields_length);
    row.clear();
    bool bad = false;
    for (size_t i = 0; i < layout.fields.size(); ++i) {
      const Field& f = layout.fields[i];
      value.clear();
      bool is_null = false;
      if (!DecodeField(f, rec, &value, &is_null, &error)) {
        const unsigned char* p =
            reinterpret_cast<const unsigned char*>(data.data()) + recs[r].offset + f.offset;
        std::fprintf(stderr, "zqrec: %s: record %ld, byte offset %zu: %s: %s; bytes %s\n",
                     path.c_str(), number, recs[r].offset + f.offset, FieldWhere(f).c_str(),
                     error.c_str(), HexBytes(p, f.length).c_str());
        bad = true;
        continue;
      }
      if (csv) {
        if (i) row.push_back(',');
        if (f.kind == Kind::kText) {
          AppendCsv(value, &row);
        } else {
          row.append(value);
        }
      } else {
        row.append(i ? "," : "{");
        row.append(json_names[i]);
        if (is_null) {
          row.append("null");
        } else if (IsNumeric(f.kind)) {
          row.append(value);
        } else {
          AppendJsonString(value, &row);
        }
      }
    }
    if (bad) {
      ++errors;
      continue;
    }
    buf.append(row);
    buf.append(csv ? "\r\n" : "}\n");
    ++records;
    fields += static_cast<long>(layout.fields.size());
    out.MaybeFlush();
    progress.Update(recs[r].offset, records);
  }
  progress.Finish();
  if (errors > o.max_errors && o.max_errors >= 0 && errors > 0 &&
      records + errors < static_cast<long>(recs.size())) {
    std::fprintf(stderr, "zqrec: %s: stopped after %ld bad records (--max-errors %ld)\n",
                 path.c_str(), errors, o.max_errors);
  }
  if (!out.Close()) {
    std::fprintf(stderr, "zqrec: %s\n", out.error().c_str());
    return kExitIo;
  }
  if (!o.quiet) Summary("decoded", records, fields, errors, Seconds(start), "bad records");
  return errors > 0 ? kExitData : kExitOk;
}

// One parsed CSV row with the line it starts on.
struct CsvRow {
  long line;
  std::vector<std::string> cells;
};

// Splits RFC 4180 text (CRLF or LF line ends) into rows; false with `error`
// at an unterminated quoted field.
bool ParseCsv(const std::string& text, std::vector<CsvRow>* rows, std::string* error) {
  size_t i = 0;
  long line = 1;
  const size_t n = text.size();
  while (i < n) {
    CsvRow row;
    row.line = line;
    for (;;) {
      std::string cell;
      if (i < n && text[i] == '"') {
        const long opened = line;
        ++i;
        for (;;) {
          if (i >= n) {
            *error = "line " + std::to_string(opened) + ": a quoted field is never closed";
            return false;
          }
          if (text[i] == '"') {
            if (i + 1 < n && text[i + 1] == '"') {
              cell.push_back('"');
              i += 2;
              continue;
            }
            ++i;
            break;
          }
          if (text[i] == '\n') ++line;
          cell.push_back(text[i++]);
        }
        if (i < n && text[i] != ',' && text[i] != '\r' && text[i] != '\n') {
          *error = "line " + std::to_string(line) + ": unexpected text after a quoted field";
          return false;
        }
      } else {
        while (i < n && text[i] != ',' && text[i] != '\r' && text[i] != '\n') cell.push_back(text[i++]);
      }
      row.cells.push_back(cell);
      if (i < n && text[i] == ',') {
        ++i;
        continue;
      }
      if (i < n && text[i] == '\r') ++i;
      if (i < n && text[i] == '\n') ++i;
      ++line;
      break;
    }
    rows->push_back(std::move(row));
  }
  return true;
}

void AppendRecord(const Options& o, const std::string& rec, std::string* block, Writer* out) {
  std::string& buf = out->buf();
  if (!o.rdw) {
    buf.append(rec);
    return;
  }
  const size_t len = rec.size() + 4;
  const char rdw[4] = {static_cast<char>(len >> 8), static_cast<char>(len & 0xFF), 0, 0};
  if (!o.bdw) {
    buf.append(rdw, 4);
    buf.append(rec);
    return;
  }
  if (!block->empty() && block->size() + len + 4 > static_cast<size_t>(o.block_size)) {
    const size_t bl = block->size() + 4;
    const char bdw[4] = {static_cast<char>(bl >> 8), static_cast<char>(bl & 0xFF), 0, 0};
    buf.append(bdw, 4);
    buf.append(*block);
    block->clear();
  }
  block->append(rdw, 4);
  block->append(rec);
}

int Encode(const Options& o) {
  if (o.args.size() != 2) {
    Usage("encode", "expected a layout file and a CSV file");
    return kExitUsage;
  }
  Layout layout;
  int rc = Prepare(o, o.args[0], &layout);
  if (rc >= 0) return rc;
  if (o.rdw && layout.record_length + 4 > 0xFFFF) {
    std::fprintf(stderr, "zqrec: records of %d bytes are too long for record descriptor words\n",
                 layout.record_length);
    return kExitUsage;
  }
  if (o.bdw && layout.record_length + 8 > o.block_size) {
    std::fprintf(stderr, "zqrec: a block of %ld bytes cannot hold a record of %d bytes\n",
                 o.block_size, layout.record_length);
    return kExitUsage;
  }
  const std::string& path = o.args[1];
  std::string text, error;
  if (!ReadAll(path, &text, &error)) {
    std::fprintf(stderr, "zqrec: %s\n", error.c_str());
    return kExitIo;
  }
  // A byte order mark, as some spreadsheets write, is not part of the header.
  if (text.compare(0, 3, "\xEF\xBB\xBF") == 0) text.erase(0, 3);
  std::vector<CsvRow> rows;
  if (!ParseCsv(text, &rows, &error)) {
    std::fprintf(stderr, "zqrec: %s: %s\n", path.c_str(), error.c_str());
    return kExitData;
  }
  if (rows.empty()) {
    std::fprintf(stderr, "zqrec: %s: expected a header row naming the fields\n", path.c_str());
    return kExitData;
  }
  // Column of each layout field, by the header's names.
  std::vector<size_t> column(layout.fields.size());
  const std::vector<std::string>& header = rows[0].cells;
  for (size_t c = 0; c < header.size(); ++c) {
    bool known = false;
    for (const Field& f : layout.fields) known = known || f.name == header[c];
    if (!known) {
      std::fprintf(stderr, "zqrec: %s: line 1: the column \"%s\" is not a field of %s\n",
                   path.c_str(), header[c].c_str(), layout.path.c_str());
      return kExitUsage;
    }
  }
  for (size_t i = 0; i < layout.fields.size(); ++i) {
    size_t c = 0;
    while (c < header.size() && header[c] != layout.fields[i].name) ++c;
    if (c == header.size()) {
      std::fprintf(stderr, "zqrec: %s: line 1: no column for the field \"%s\"\n", path.c_str(),
                   layout.fields[i].name.c_str());
      return kExitUsage;
    }
    column[i] = c;
  }
  Writer out;
  if (!out.Open(o.output, &error)) {
    std::fprintf(stderr, "zqrec: %s\n", error.c_str());
    return kExitIo;
  }
  const auto start = std::chrono::steady_clock::now();
  Progress progress(!o.quiet && isatty(2), text.size());
  long errors = 0, records = 0;
  ZQString rec;
  std::string block, bytes;
  for (size_t r = 1; r < rows.size() && errors <= o.max_errors; ++r) {
    const CsvRow& row = rows[r];
    if (row.cells.size() != header.size()) {
      std::fprintf(stderr, "zqrec: %s: line %ld has %zu fields, the header has %zu\n", path.c_str(),
                   row.line, row.cells.size(), header.size());
      ++errors;
      continue;
    }
    rec.clear();
    bool bad = false;
    for (size_t i = 0; i < layout.fields.size() && !bad; ++i) {
      if (!EncodeField(layout.fields[i], row.cells[column[i]], &rec, &error)) {
        std::fprintf(stderr, "zqrec: %s: line %ld: field \"%s\" (%s): %s\n", path.c_str(), row.line,
                     layout.fields[i].name.c_str(), layout.fields[i].type.TypeName(), error.c_str());
        bad = true;
      }
    }
    if (bad) {
      ++errors;
      continue;
    }
    bytes.assign(rec.c_str(), rec.length());
    bytes.append(static_cast<size_t>(layout.record_length - layout.fields_length),
                 static_cast<char>(layout.filler));
    AppendRecord(o, bytes, &block, &out);
    ++records;
    out.MaybeFlush();
    progress.Update(text.size() / rows.size() * r, records);
  }
  progress.Finish();
  if (!block.empty()) {
    const size_t bl = block.size() + 4;
    const char bdw[4] = {static_cast<char>(bl >> 8), static_cast<char>(bl & 0xFF), 0, 0};
    out.buf().append(bdw, 4);
    out.buf().append(block);
  }
  if (!out.Close()) {
    std::fprintf(stderr, "zqrec: %s\n", out.error().c_str());
    return kExitIo;
  }
  if (!o.quiet) {
    Summary("encoded", records, records * static_cast<long>(layout.fields.size()), errors,
            Seconds(start), "bad rows");
  }
  return errors > 0 ? kExitData : kExitOk;
}

int Verify(const Options& o) {
  RecordSource src;
  const int rc = OpenRecords(o, "verify", &src);
  if (rc >= 0) return rc;
  const auto& [layout, in, recs, frame_error] = src;
  const std::string& path = o.args[1];
  const std::string_view data = in.data();
  const auto start = std::chrono::steady_clock::now();
  Progress progress(!o.quiet && isatty(2), data.size());
  long errors = frame_error ? 1 : 0, records = 0;
  ZQString rec, again;
  std::string value, error;
  for (size_t r = 0; r < recs.size() && errors <= o.max_errors; ++r) {
    const long number = static_cast<long>(r) + 1;
    if (ShortRecord(path, layout, recs[r], number)) {
      ++errors;
      continue;
    }
    rec.CopyN(data.data() + recs[r].offset, layout.fields_length);
    bool bad = false;
    for (const Field& f : layout.fields) {
      const unsigned char* p = reinterpret_cast<const unsigned char*>(rec.c_str()) + f.offset;
      value.clear();
      again.clear();
      bool is_null = false;
      if (!DecodeField(f, rec, &value, &is_null, &error)) {
        std::fprintf(stderr, "zqrec: %s: record %ld, byte offset %zu: %s: %s; bytes %s\n",
                     path.c_str(), number, recs[r].offset + f.offset, FieldWhere(f).c_str(),
                     error.c_str(), HexBytes(p, f.length).c_str());
        bad = true;
        continue;
      }
      if (!EncodeField(f, value, &again, &error)) {
        std::fprintf(stderr,
                     "zqrec: %s: record %ld, byte offset %zu: %s: decoded as \"%s\", which "
                     "does not encode again: %s; bytes %s\n",
                     path.c_str(), number, recs[r].offset + f.offset, FieldWhere(f).c_str(),
                     value.c_str(), error.c_str(), HexBytes(p, f.length).c_str());
        bad = true;
        continue;
      }
      if (std::memcmp(again.c_str(), p, static_cast<size_t>(f.length)) != 0) {
        std::fprintf(stderr,
                     "zqrec: %s: record %ld, byte offset %zu: %s does not come back "
                     "identical: stored %s, decoded as \"%s\", encoded again as %s\n",
                     path.c_str(), number, recs[r].offset + f.offset, FieldWhere(f).c_str(),
                     HexBytes(p, f.length).c_str(), value.c_str(),
                     HexBytes(reinterpret_cast<const unsigned char*>(again.c_str()), f.length).c_str());
        bad = true;
      }
    }
    if (bad) {
      ++errors;
    } else {
      ++records;
    }
    progress.Update(recs[r].offset, records + errors);
  }
  progress.Finish();
  if (!o.quiet) {
    Summary("verified", records, records * static_cast<long>(layout.fields.size()), errors,
            Seconds(start), "records that differ or fail");
  }
  return errors > 0 ? kExitData : kExitOk;
}

const char* YesNo(bool b) { return b ? "yes" : "no"; }

int Describe(const Options& o) {
  if (o.args.size() != 1) {
    Usage("describe", "expected one property string");
    return kExitUsage;
  }
  std::string text = o.args[0];
  // A bare type name or unquoted string is taken as if quoted.
  if (text.empty() || text[0] != '\'') {
    std::string quoted = "'";
    for (size_t i = 0; i < text.size(); ++i) {
      if (text[i] == '\\' && i + 1 < text.size()) {
        quoted += text.substr(i++, 2);
      } else {
        quoted += text[i];
      }
    }
    text = quoted + "'";
  }
  ZQDType t;
  size_t col = 0;
  std::string error;
  if (!ParseProperties(text, &t, &col, &error)) {
    std::fprintf(stderr, "zqrec describe: column %zu: %s\n", col + 1, error.c_str());
    return kExitUsage;
  }
  ZQString norm;
  t.Print(norm);
  std::printf("normalised:     %s\n", norm.c_str());
  std::printf("type:           %s (%d), generic type %s (%d)\n", t.TypeName(),
              static_cast<int>(t.Type()), ZQDType::TypeNameOf(t.GenericType()) ? ZQDType::TypeNameOf(t.GenericType()) : "?",
              static_cast<int>(t.GenericType()));
  std::printf("display length: %ld\n\n", t.CalculateDisplayLength());
  std::printf("%-18s %-22s %-10s %s\n", "property", "value", "meaningful", "settable");
  char pad[16];
  auto row = [](const char* name, const std::string& value, bool meaningful, bool settable) {
    std::printf("%-18s %-22s %-10s %s\n", name, value.c_str(), YesNo(meaningful), YesNo(settable));
  };
  auto range = [](long v, long lo, long hi) {
    return std::to_string(v) + " (" + std::to_string(lo) + " to " + std::to_string(hi) + ")";
  };
  auto code = [](const char* s) { return std::string(s ? s : "-"); };
  row("length", range(t.Length(), t.MinLength(), t.MaxLength()), t.Length_Meaningful(), t.Length_Settable());
  row("precision", range(t.Precision(), t.MinPrecision(), t.MaxPrecision()), t.Precision_Meaningful(), t.Precision_Settable());
  row("decimal places", range(t.DecimalPlaces(), t.MinDecimalPlaces(), t.MaxDecimalPlaces()), t.DecimalPlaces_Meaningful(), t.DecimalPlaces_Settable());
  row("scale", range(t.Scale(), t.MinScale(), t.MaxScale()), t.Scale_Meaningful(), t.Scale_Settable());
  row("byte order", t.MSBFirst() ? "MSB first" : "LSB first", t.MSBFirst_Meaningful(), t.MSBFirst_Settable());
  row("signed", t.Signed() ? "True" : "False", t.Signed_Meaningful(), t.Signed_Settable());
  row("sign position", code(ZQDType::NegposToChar(t.SignPos(), false)), t.SignPos_Meaningful(), t.SignPos_Settable());
  row("sign style", code(ZQDType::NegstyleToChar(t.SignStyle(), false)), t.SignStyle_Meaningful(), t.SignStyle_Settable());
  row("negative type", code(ZQDType::NegtypeToChar(t.NegType(), false)), t.NegType_Meaningful(), t.NegType_Settable());
  row("alignment", code(ZQDType::AlignToChar(t.Align(), true)), t.Align_Meaningful(), t.Align_Settable());
  row("pad character", t.GetPadChar(pad), t.PadChar_Meaningful(), t.PadChar_Settable());
  row("decimal separator", std::string(1, static_cast<char>(t.DecimalSeparator())), t.DecimalSeparator_Meaningful(), t.DecimalSeparator_Settable());
  row("thousand separator", t.ThousandSeparator() ? std::string(1, static_cast<char>(t.ThousandSeparator())) : "none", t.ThousandSeparator_Meaningful(), t.ThousandSeparator_Settable());
  row("variable length", t.VariableLength() ? "True" : "False", t.VariableLength_Meaningful(), t.VariableLength_Settable());
  row("nulls", t.Nulls() ? "True" : "False", t.Nulls_Meaningful(), t.Nulls_Settable());
  row("identity", t.Identity() ? "True" : "False", t.Identity_Meaningful(), t.Identity_Settable());
  row("picture", code(t.Picture()), t.Picture_Meaningful(), t.Picture_Settable());
  return kExitOk;
}

const char* KindName(DATATYPE t) {
  switch (static_cast<int>(t)) {
    case 4: case 101: case 110: case 145: return "packed, exact";
    case 112: case 138: case 139: case 140: case 141: return "zoned, exact";
    case 174: return "BCD, exact";
    case 1: case 2: case 12: case 117: case 142: case 146: case 147: case 149: case 150:
      return "binary, exact";
    case 3: case 104: case 105: case 106: case 108: case 109: case 115: case 116:
    case 132: case 133: case 143: case 144: case 168: case 173: case 175: case 176:
      return "floating point";
    case 6: case 124: case 130: case 169: return "date";
    case 7: case 125: case 131: case 170: case 171: return "time";
    case 0: case 10: case 126: case 127: case 128: case 136: case 137: case 148: return "text";
    case 155: return "hexadecimal";
    default: return "not supported";
  }
}

int Types(const Options& o) {
  if (!o.args.empty()) {
    Usage("types", "expected no arguments");
    return kExitUsage;
  }
  auto triple = [](long d, long lo, long hi, bool meaningful) -> std::string {
    if (!meaningful && d == 0 && lo == 0 && hi == 0) return "-";
    if (d == lo && lo == hi) return std::to_string(d);
    return std::to_string(d) + "/" + std::to_string(lo) + "/" + std::to_string(hi);
  };
  std::printf("%-5s %-32s %-14s %-15s %-15s %-9s %-11s %s\n", "value", "name", "generic",
              "length", "precision", "decimals", "scale", "zqrec");
  for (const char* const* name = ZQDType::GetAllTypedefs(); *name; ++name) {
    DATATYPE v;
    if (!ZQDType::TypeByName(*name, v)) continue;
    ZQDType t(v);
    const char* generic = ZQDType::TypeNameOf(t.GenericType());
    std::printf("%-5d %-32s %-14s %-15s %-15s %-9s %-11s %s\n", static_cast<int>(v), *name,
                generic ? generic : "-",
                triple(t.Length(), t.MinLength(), t.MaxLength(), t.Length_Meaningful()).c_str(),
                triple(t.Precision(), t.MinPrecision(), t.MaxPrecision(), t.Precision_Meaningful()).c_str(),
                triple(t.DecimalPlaces(), t.MinDecimalPlaces(), t.MaxDecimalPlaces(), t.DecimalPlaces_Meaningful()).c_str(),
                triple(t.Scale(), t.MinScale(), t.MaxScale(), t.Scale_Meaningful()).c_str(),
                KindName(v));
  }
  return kExitOk;
}

}  // namespace
}  // namespace zqrec

int main(int argc, char** argv) {
  using namespace zqrec;
  if (argc < 2) {
    PrintHelp(nullptr);
    return kExitUsage;
  }
  const std::string cmd = argv[1];
  if (cmd == "--help" || cmd == "-h" || cmd == "help") {
    if (argc > 2) {
      for (const CommandHelp* c = kCommands; c->name; ++c) {
        if (argv[2] == std::string(c->name)) {
          PrintHelp(c);
          return kExitOk;
        }
      }
    }
    PrintHelp(nullptr);
    return kExitOk;
  }
  if (cmd == "--version" || cmd == "-V") {
    std::printf("zqrec %s\n", ZQREC_VERSION);
    return kExitOk;
  }
  if (cmd == "--man") {
    PrintManPage(ZQREC_VERSION);
    return kExitOk;
  }
  for (const CommandHelp* c = kCommands; c->name; ++c) {
    if (cmd != c->name) continue;
    Options o;
    const int rc = ParseOptions(*c, argc - 2, argv + 2, &o);
    if (rc >= 0) return rc;
    std::fflush(stdout);
    switch (c - kCommands) {
      case 0: return Decode(o);
      case 1: return Encode(o);
      case 2: return Verify(o);
      case 3: return Describe(o);
      default: return Types(o);
    }
  }
  Usage(nullptr, "unknown command \"" + cmd + "\" (expected decode, encode, verify, describe or types)");
  return kExitUsage;
}
