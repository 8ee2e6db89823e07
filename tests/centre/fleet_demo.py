"""Shows the answers of a centre about three hosts; for scripts/demo-fleet.sh, in a sample host."""

import subprocess
import sys

import fleet_story
from centre_host import SOCKETS
from fleet import HOSTS, Fleet


def show(question, lines):
    print(f"\n{question}\n\n{lines.rstrip()}", flush=True)


def main():
    print("Starting a centre and the hosts " + ", ".join(HOSTS) + " ...", flush=True)
    fleet = Fleet()
    print("Clients open, close and change files there ...", flush=True)
    moment = fleet_story.tell(fleet)
    for question, query in fleet_story.QUESTIONS.items():
        query = query.format(moment=moment.isoformat(timespec="seconds"))
        answer = subprocess.run(["psql", "-h", SOCKETS, "-U", "reader", "-c", query, "vornopenfiles"], check=True,
                                capture_output=True, text=True)
        show(question, f"vornopenfiles=> {query};\n{answer.stdout}")
    command = ["vorn-openfiles", "--where", "share=projects"]
    show("Is share projects, which is to be migrated, still in use?", "\n".join(
        f"{node}$ {' '.join(command)}\n{fleet.ask(node, *command).stdout}" for node in HOSTS))


if __name__ == "__main__":
    sys.dont_write_bytecode = True
    main()
