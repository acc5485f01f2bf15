#include "cli/command_help.h"

#include <string>
#include <utility>

namespace kestrelon::cli {

namespace {

// Keyed by the command's words; a command added without a text here fails its test.
constexpr std::pair<std::string_view, std::string_view> kDescriptions[] = {
    {"project dump", "Prints the project file's tree as JSON. --drop-missing leaves out sources whose WAV file "
                     "is not in the project folder, as opening the project does."},
    {"project rewrite", "Reads a project file and writes it again as the program would save it."},
    {"project new", "Creates the project NAME in the folder LOCATION: LOCATION/NAME with its Files, Algos and "
                    "Temp folders and NAME.ptp."},
    {"project save-as", "Saves the project under a new project file, with everything it names."},
    {"project add-folder", "Adds a folder named NAME to the Files tree, under the folder --parent ID (the top "
                           "level by default)."},
    {"project add-files", "Copies WAV files into the project and adds them to the Files tree, under the folder "
                          "--folder ID (the top level by default). Questions are answered by --yes/--no."},
    {"project delete-files", "Removes the sources with these IDs from the tree, with their rows."},
    {"project delete-folder", "Removes the folders with these IDs from the tree, with everything in them."},
    {"project delete-all", "Removes every source and folder from the Files tree."},
    {"project rename-folder", "Renames the folder ID to NEWNAME."},
    {"project add-algo", "Copies a codec plug-in (with its .bdy file) into the project's Algos folder and "
                         "registers it."},
    {"project add-encode", "Adds an encode setting (row) of body B, algorithm A and bit rate R to each source "
                           "given by ID (every source when none is given) and encodes it at once; --decode "
                           "decodes each row after it is encoded. --jobs N runs N rows at once (default: the "
                           "cores); the project, its files and the messages are as when run one by one."},
    {"project encode", "Encodes the rows given by --rows (counted from 0 in list order; every row by default); "
                       "--decode decodes each row after it is encoded; --jobs N as for add-encode."},
    {"project decode", "Decodes the encoded rows given by --rows (every row by default); --jobs N as for "
                       "add-encode."},
    {"project list", "Prints the main list's rows with their settings, file names, sizes and rates."},
    {"project export", "Writes the encoded data of the rows given by --rows (every row by default) into DIR, "
                       "with an index file; --header keeps each file's 48-byte header. --format c adds BASE.h and "
                       "BASE.c with the data as C arrays, an enum and a table; --format image adds BASE.bin, "
                       "a ROM image with a table of contents, its items aligned to --align bytes (4), numbers "
                       "in --byte-order (little), gaps filled with --pad (0xff). BASE is --name (speech_data)."},
    {"project quality", "Measures each decoded row (--rows, or every row) against its source: segmental SNR, "
                        "a mel-band log-spectral distance after alignment, and the decode's duration against the "
                        "source's. The measures are kept in PROJECT.quality beside the project file and read back "
                        "while the decode stays the same."},
    {"project sweep", "Encodes and decodes the sources given by ID (every source by default) at every bit rate "
                      "that body B offers for each of its algorithms (or those named by --algo, which may be "
                      "given again), in scratch projects that leave this one as it was, and reports per source "
                      "and setting the encode size, compression rate and quality; --csv FILE writes the same "
                      "table as CSV. --jobs N shares the settings out to N processes (default: the cores)."},
    {"sweep", "As project sweep, for wave files given by path, with no project: each WAVE is encoded and "
              "decoded at every bit rate that body B offers for each of its algorithms (or those named by "
              "--algo), and the table reports per file and setting the encode size, compression rate and "
              "quality. The workbench's bit-rate comparison runs it while its project stays open."},
    {"bodies", "Prints the body settings as JSON: the file FILE, or without it the file the program uses (the "
               "user's copy when there is one, else the one beside the program), named in \"file\"."},
    {"bodies set-volume", "Sets the current volume of the body BODY, within the body's limits, and writes it "
                          "back as the workbench does at exit: into the file in use, or into the user's copy "
                          "when the program folder cannot be written."},
    {"play", "Plays row N (counted from 0 in list order) through the PC player that the body settings name: "
             "its source wave (original) or its decoded wave (decoded), --loop-count times (1), and returns "
             "when it has ended. \"samples\" says how many samples were played, over every pass. With --what "
             "encoded, the row's encoded data (without its header) plays on the target board through the board "
             "player, and \"bytesSent\" says how much the board took."},
    {"registry dump", "Prints the project's algorithm registry as JSON."},
    {"registry prune", "Removes registry entries whose plug-in is no longer in the project's Algos folder."},
    {"events dump", "Prints a speech event file as JSON."},
    {"events add", "Adds an event at sample N with the ID K (1 to 254) to a speech event file and writes it; an "
                   "event that already has the ID is replaced with --yes and kept (nothing added) with --no. "
                   "--label sets a custom label, --default-label goes back to the default one."},
    {"events delete", "Removes the event with the ID K from a speech event file and writes it."},
    {"board version", "Asks the target board on port --port N (0) for its host and driver versions through the "
                      "board player the body settings name, as Body Information's Get Version does; \"status\" is "
                      "its status line."},
    {"wave save", "Saves a wave, or the samples --from S up to (not including) --to S, as a mono 16-bit WAV "
                  "file; the name must end in .wav."},
    {"wave render", "Draws a wave (or --from S --to S) as a PNG picture of --width by --height pixels (1600 by "
                    "200), with the waveform colours of the user's settings (or --settings-dir DIR) and the "
                    "marks of --events FILE.evt."},
    {"playlist dump", "Prints a play-list file as JSON."},
    {"playlist show", "Prints the project's play list after the check the Play Sentence dialog makes on opening "
                      "(entries whose row is gone are removed, with its message, and the project saved)."},
    {"playlist add", "Appends rows (--rows N,... counted from 0 in list order, or --all) to the project's play "
                     "list, up to 256 entries, and saves the project."},
    {"playlist remove", "Removes entries (--entries N,... counted from 0 in play order, or --all) from the "
                        "project's play list and saves the project."},
    {"playlist play", "Plays the project's play list in order: each entry's source (original) or decoded wave "
                      "(decoded) on the PC, or all their encoded data on the target board (encoded)."},
    {"header", "Prints the 48-byte header of an encoded file (an exported file or an unpacked interim file) "
               "as JSON."},
    {"settings dump", "Prints the persisted user settings as JSON; --settings-dir reads them from DIR instead "
                      "of the user's profile."},
    {"algo info", "Loads a codec plug-in and prints what it says of itself."},
    {"algo list", "Prints the codec plug-ins in a project's Algos folder with what each says of itself."},
};

constexpr std::string_view kGlobalOptions =
    "global options:\n"
    "  --json             print the answer as one JSON object\n"
    "  --yes, --no, --cancel\n"
    "                     the answer to every question a command asks (--no by default)\n"
    "  --settings FILE    the body settings file to use instead of the program's\n"
    "  --in-process       run codecs in this process rather than in a worker process\n"
    "                     (for a debugger; a crashing codec then ends the command)\n"
    "  --help             this text; COMMAND --help describes one command\n"
    "  --version          the program's version\n"
    "\n"
    "exit status: 0 done, 1 failed (the messages say why), 2 usage mistake\n";

std::string commandKey(const CommandSpec& command)
{
    std::string key;
    for (std::string_view word : command.words) {
        if (!key.empty())
            key += ' ';
        key += word;
    }
    return key;
}

} // namespace

std::string_view commandDescription(const CommandSpec& command)
{
    const std::string key = commandKey(command);
    for (const auto& [name, text] : kDescriptions)
        if (name == key)
            return text;
    return {};
}

void printUsage(std::ostream& out)
{
    out << "usage: kestrelon-cli [--json] [--yes|--no|--cancel] [--settings FILE] COMMAND ...\n\n"
           "Kestrelon's operations without a window, for scripts and firmware builds.\n\n"
        << kGlobalOptions << "\ncommands:\n";
    for (const CommandSpec& command : commandTable())
        out << "  " << command.usage << "\n      " << commandDescription(command) << '\n';
}

void printCommandHelp(std::ostream& out, const CommandSpec& command)
{
    out << "usage: kestrelon-cli [global options] " << command.usage << "\n\n"
        << commandDescription(command) << "\n\n"
        << kGlobalOptions;
}

} // namespace kestrelon::cli
