"""What tests in Python share: see tests/run.py, which runs them.

    sample_host  what the host has, its users, the project installed on it
    command      the command and what it prints; listing, what the installed one lists
    processes    programs to run, processes in groups and as users, holders of files
    servers      real servers, their network, the system log
    terminal     a program on a terminal
    recording    opens and closes as the command tells them
    fuse_volume  a volume that stops answering
    files        files to write;  waiting: for what must happen
"""
