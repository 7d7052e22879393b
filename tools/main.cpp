// tessmeta: create, inspect, check, upgrade, purge and demonstrate model files.
#include <CLI/CLI.hpp>

#include <cstdio>

#include "command.h"
#include "exchange.h"

using namespace tessmeta::tool;

int main(int argc, char** argv) {
    CLI::App app{
        "tessmeta: create, inspect, check, upgrade and purge model files (.zmf); every FILE may\n"
        "also be a model on a PostgreSQL server: postgresql://[user[:password]@]host[:port]/"
        "database/model"};
    app.require_subcommand(1);
    app.set_help_all_flag("--help-all", "Show the help of every subcommand");
    app.set_version_flag("--version", std::string("tessmeta ") + TESSMETA_VERSION);

    std::string file, output, table, format = "text", uri;
    bool replace = false;
    std::uint64_t objects = 0;
    std::uint32_t seed = 1, submodel = 0;
    auto addFile = [&](CLI::App* cmd, const char* what) {
        cmd->add_option("FILE", file, what)->required();
    };

    auto* cmdNew = app.add_subcommand("new", "Create a new, empty model file");
    addFile(cmdNew, "the .zmf file to create (must not exist)");

    auto* cmdInfo = app.add_subcommand(
        "info", "Show format version, rows per table, objects per type, domains, usage types");
    addFile(cmdInfo, "a model file");

    auto* cmdDump = app.add_subcommand(
        "dump", "Print the rows of a model file, strings resolved and GUIDs as text");
    addFile(cmdDump, "a model file");
    cmdDump->add_option("--table", table, "only this table (e.g. UniqueObject)");
    cmdDump->add_option("--format", format, "text or json")->check(CLI::IsMember({"text", "json"}));

    auto* cmdCheck = app.add_subcommand(
        "check", "Check a model file's integrity; exit status 1 when anything is wrong");
    addFile(cmdCheck, "a model file");

    auto* cmdUpgrade = app.add_subcommand(
        "upgrade", "Load a model file of an older format version and save it as 530");
    addFile(cmdUpgrade, "a model file");
    cmdUpgrade->add_option("-o,--output", output, "write the upgraded model here (must not exist)");

    auto* cmdPurge = app.add_subcommand(
        "purge", "Save a model file dropping the strings no object uses; print what was dropped");
    addFile(cmdPurge, "a model file");

    auto* cmdGen = app.add_subcommand("gen", "Create a synthetic model of N unique objects");
    addFile(cmdGen, "the .zmf file to create (must not exist)");
    cmdGen->add_option("--objects", objects, "number of unique objects")
        ->required()
        ->check(CLI::Range(std::uint64_t{2}, std::uint64_t{100000000}));
    cmdGen->add_option("--seed", seed, "seed of the generator (default 1)");
    bool everyManager = false;
    cmdGen->add_flag("--every-manager", everyManager,
                     "also fill dictionary items and links, overrides and layout settings");

    auto* cmdDemo = app.add_subcommand(
        "demo", "Build a small model, save it, reopen it, verify it and print a summary");
    addFile(cmdDemo, "the .zmf file to create (must not exist)");

    auto* cmdLayout = app.add_subcommand(
        "layout", "Print the automatic layout settings of a submodel, or of every submodel");
    addFile(cmdLayout, "a model file");
    cmdLayout->add_option("--submodel", submodel, "only this submodel (its object id)")
        ->check(CLI::Range(std::uint32_t{1}, UINT32_MAX));
    int platform = 0;
    auto* cmdSysMacros = app.add_subcommand(
        "sysmacros",
        "Create or refresh the system trigger libraries and triggers of a database platform "
        "from the macro templates; print the new keys");
    addFile(cmdSysMacros, "a model file");
    cmdSysMacros->add_option("--platform", platform, "1 Transact-SQL, 2 PL/SQL, 3 SQL PL")
        ->required()
        ->check(CLI::Range(1, 3));
    auto* cmdRepo = app.add_subcommand(
        "repo",
        "List what an exchange with the repository would carry: modified and deleted "
        "objects, inter-model relationships, pending check-outs");
    addFile(cmdRepo, "a model file");
    std::uint32_t objectId = 0;
    auto* cmdProps =
        app.add_subcommand("props", "List an object's properties and display overrides");
    addFile(cmdProps, "a model file");
    cmdProps->add_option("OBJECT-ID", objectId, "the object's id (its row id in its table)")
        ->required()
        ->check(CLI::Range(std::uint32_t{1}, std::uint32_t{4294967295u}));
    auto* cmdPush = app.add_subcommand(
        "push", "Copy a model file to a PostgreSQL server (every table, counters, version)");
    addFile(cmdPush, "the .zmf file to copy");
    cmdPush->add_option("URI", uri, "postgresql://[user[:password]@]host[:port]/database/model")
        ->required();
    cmdPush->add_flag("--replace", replace, "overwrite the model if it exists on the server");

    auto* cmdPull =
        app.add_subcommand("pull", "Copy a model from a PostgreSQL server to a new file");
    cmdPull->add_option("URI", uri, "postgresql://[user[:password]@]host[:port]/database/model")
        ->required();
    addFile(cmdPull, "the .zmf file to create (must not exist)");

    std::string input, other;
    auto* cmdExport = app.add_subcommand(
        "export", "Write a whole model as one JSON document (texts inline, GUIDs as text)");
    addFile(cmdExport, "a model file");
    cmdExport->add_option("-o,--output", output, "write the document here (default: stdout)");

    auto* cmdImport =
        app.add_subcommand("import", "Create a model file from a JSON document written by export");
    cmdImport->add_option("IN", input, "the JSON document")->required();
    cmdImport->add_option("-o,--output", file, "the model file to create (must not exist)")
        ->required();

    auto* cmdDiff = app.add_subcommand(
        "diff",
        "Compare two models object by object; exit status 0 equal, 1 different, 2 bad "
        "input");
    addFile(cmdDiff, "the first model");
    cmdDiff->add_option("OTHER", other, "the second model")->required();
    cmdDiff->add_option("--format", format, "text or json")->check(CLI::IsMember({"text", "json"}));

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForAllHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForVersion& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        return Fail(e.what());
    }

    if (*cmdNew) return RunNew(file);
    if (*cmdInfo) return RunInfo(file);
    if (*cmdDump) return RunDump(file, {table, format});
    if (*cmdCheck) return RunCheck(file);
    if (*cmdUpgrade) return RunUpgrade(file, output);
    if (*cmdPurge) return RunPurge(file);
    if (*cmdGen) return RunGen(file, objects, seed, everyManager);
    if (*cmdLayout) return RunLayout(file, submodel);
    if (*cmdSysMacros) return RunSysMacros(file, platform);
    if (*cmdRepo) return RunRepo(file);
    if (*cmdProps) return RunProps(file, objectId);
    if (*cmdPush) return RunPush(file, uri, replace);
    if (*cmdPull) return RunPull(uri, file);
    if (*cmdExport) return RunExport(file, output);
    if (*cmdImport) return RunImport(input, file);
    if (*cmdDiff) return RunDiff(file, other, format);
    return RunDemo(file);
}
