# Completion of quillbay's command line for fish. The program itself says what can follow.

function __quillbay_complete
    set -l typed (commandline --current-token)
    set -l words (commandline --tokenize --cut-at-cursor)
    set -l reply (command $words[1] complete -- $words[2..] "$typed" 2>/dev/null)
    if test "$reply[1]" != files
        string join -- \n $reply[2..]
        return
    end
    # Of "--name=path", only the path is one.
    set -l name (string match --regex -- '^--[^=]*=' $typed)
    for path in (__fish_complete_path (string replace -- "$name" '' $typed))
        echo -- "$name$path"
    end
end

complete --command quillbay --no-files --arguments '(__quillbay_complete)'
