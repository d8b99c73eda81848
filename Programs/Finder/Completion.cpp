#include "Programs/Finder/Completion.h"

#include <map>

namespace {

constexpr const char* kBash = R"script(# Completion of quorvane-finder for bash.
# Completes the title after "pick": from the menus of the current folder and the toolbar, and the entries of
# items. Works on the line itself, since the shell breaks words at the colon in the titles.
_quorvane_finder_title() {
    local typed=${COMP_LINE:0:COMP_POINT} plain quoted title
    typed=${typed#*pick}
    typed=${typed#"${typed%%[! ]*}"}
    case $typed in
        \"*\"* | \'*\'*) return 1 ;;
        \"* | \'*) plain=${typed:1} quoted=yes ;;
        *)
            quoted=${typed//\\?/}
            [[ $quoted == *' '* ]] && return 1
            plain=${typed//\\/} quoted=
            ;;
    esac
    while IFS= read -r title; do
        [[ $title == "$plain"* ]] || continue
        [ -n "$quoted" ] || title=$(printf '%q' "$title")
        if [ -z "$quoted" ] && [[ $typed == *:* ]]; then title=${title#*:}; fi
        COMPREPLY+=("$title")
    done < <({
        quorvane-finder menu --kind container --target . 2>/dev/null
        quorvane-finder menu --kind toolbar 2>/dev/null
        printf '%s\n' 'QV: Move To Trash' 'QV: Restore' 'QV: Delete'
    } | grep -E '^(QV: |Empty Trash|Refresh Folder)' | sort -u)
    return 0
}
_quorvane_finder() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local command=${COMP_WORDS[1]} IFS=$'\n'
    COMPREPLY=()
    if [ "$COMP_CWORD" -eq 1 ]; then
        mapfile -t COMPREPLY < <(compgen -W $'status\nmenu\npick\nobserve\ncompletion\n--help\n--version' -- "$current")
        return
    fi
    case $previous in
        --kind) mapfile -t COMPREPLY < <(compgen -W $'items\ncontainer\nsidebar\ntoolbar' -- "$current"); return ;;
        --target) compopt -o filenames; mapfile -t COMPREPLY < <(compgen -d -- "$current"); return ;;
        --timeout) return ;;
    esac
    case $command in
        pick)
            if [[ $current != -* ]] && _quorvane_finder_title; then return; fi ;;
        observe)
            if [ "$COMP_CWORD" -eq 2 ]; then
                mapfile -t COMPREPLY < <(compgen -W $'begin\nend' -- "$current")
            else
                compopt -o filenames
                mapfile -t COMPREPLY < <(compgen -d -- "$current")
            fi
            return ;;
        completion) mapfile -t COMPREPLY < <(compgen -W $'bash\nzsh\nfish' -- "$current"); return ;;
        status) mapfile -t COMPREPLY < <(compgen -W $'--json\n--timeout\n--help' -- "$current"); return ;;
    esac
    if [[ $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W $'--kind\n--target\n--json\n--timeout\n--help' -- "$current")
    else
        compopt -o filenames
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
    fi
}
complete -F _quorvane_finder quorvane-finder
)script";

constexpr const char* kZsh = R"script(#compdef quorvane-finder
# Completion of quorvane-finder for zsh.
_quorvane_finder_titles() {
    local -a titles
    titles=("${(@f)$(quorvane-finder menu </dev/null 2>/dev/null)}")
    compadd -a titles
}
_quorvane_finder() {
    local -a place
    place=('--kind[whose menu]:kind:(items container sidebar toolbar)'
           '--target[the folder whose window is meant]:folder:_files -/'
           '--timeout[milliseconds to wait for the extension]:milliseconds:')
    if (( CURRENT == 2 )); then
        compadd status menu pick observe completion
        _arguments '--help' '--version'
        return
    fi
    local command=${words[2]}
    shift words
    (( CURRENT-- ))
    case $command in
        status) _arguments '--json' '--timeout:milliseconds:' ;;
        menu) _arguments $place '--json[as JSON]' '*:path:_files' ;;
        pick) _arguments $place '1:entry:_quorvane_finder_titles' '*:path:_files' ;;
        observe) _arguments '1:what:(begin end)' '2:folder:_files -/' ;;
        completion) _arguments '1:shell:(bash zsh fish)' ;;
    esac
}
compdef _quorvane_finder quorvane-finder
)script";

constexpr const char* kFish = R"script(# Completion of quorvane-finder for fish.
set -l commands status menu pick observe completion
complete -c quorvane-finder -n "not __fish_seen_subcommand_from $commands" -f -a "$commands"
complete -c quorvane-finder -n "__fish_seen_subcommand_from menu pick" -l kind -x -a "items container sidebar toolbar"
complete -c quorvane-finder -n "__fish_seen_subcommand_from menu pick" -l target -x -a "(__fish_complete_directories)"
complete -c quorvane-finder -n "__fish_seen_subcommand_from menu status" -l json
complete -c quorvane-finder -n "__fish_seen_subcommand_from menu pick observe status" -l timeout -x
complete -c quorvane-finder -n "__fish_seen_subcommand_from pick" -a "(quorvane-finder menu </dev/null 2>/dev/null)"
complete -c quorvane-finder -n "__fish_seen_subcommand_from observe" -x -a "begin end (__fish_complete_directories)"
complete -c quorvane-finder -n "__fish_seen_subcommand_from completion" -x -a "bash zsh fish"
)script";

const std::map<std::string, const char*>& scripts() {
    static const std::map<std::string, const char*> all{
        {"bash", kBash},
        {"fish", kFish},
        {"zsh",  kZsh }
    };
    return all;
}

} // namespace

std::vector<std::string> completionShells() {
    std::vector<std::string> shells;
    for (const auto& [shell, script] : scripts()) {
        shells.push_back(shell);
    }
    return shells;
}

std::string completionFor(const std::string& shell) {
    return scripts().at(shell);
}
