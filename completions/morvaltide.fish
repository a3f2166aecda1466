# Completion of the command line of morvaltide in fish.

# Folders, and files with one of the suffixes.
function __morvaltide_files
    set -l word (commandline -ct | string replace -r '^--[^=]*=' '')
    __fish_complete_path $word | string match -ier "(?:/|\.(?:$(string join '|' $argv)))(?:\t.*)?\$"
end

complete -c morvaltide -f
complete -c morvaltide -s h -l help -d 'Display the help message'
complete -c morvaltide -s v -l version -d 'Display version information'
complete -c morvaltide -s p -l paper-size -x -a 'a4 letter legal' -d 'Paper size'
complete -c morvaltide -s r -l resolution -x -a 'standard fine superfine ultrafine' -d 'Resolution'
complete -c morvaltide -s R -l rotation -x -a '0 90 180 270 -90 -180 -270' -d 'Rotation angle'
complete -c morvaltide -s t -l transformation -x -a 'fittopaper' -d 'Transformation'
complete -c morvaltide -s m -l margins -x -d 'Margins in inches: L,T,R,B or H,V or M'
complete -c morvaltide -s c -l compression -x -a 'g3 g4' -d 'Coding of the pages'
complete -c morvaltide -s C -l cover-page -x -a '(__morvaltide_files html)' -d 'Cover page'
complete -c morvaltide -s o -l output-file -x -a '(__morvaltide_files tif tiff)' -d 'Output file'
complete -c morvaltide -a '(__morvaltide_files pdf tif tiff jpg jpeg png)'
