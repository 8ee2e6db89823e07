"""What happens on the three hosts, and what is asked of the centre then."""

import os
from datetime import datetime, timezone

from centre_host import ask
from harness.files import write_file
from harness.processes import stop
from harness.waiting import wait_until

PHOTOS = 30
QUESTIONS = {
    "Which hosts have someone in project X?":
        "select node, user_name, client, path from vorn.who_has('/volume1/projects/x') order by node",
    "Who had plan.ods open at that moment?":
        "select node, user_name, client, certain from vorn.who_had('/volume1/projects/x/plan.ods', '{moment}')",
    "Who uses share photo most, in a month?":
        "select user_name, files, opens from vorn.top_users('/volume1/photo', now() - interval '1 month', now())",
    "Who has changed the photos?":
        "select node, user_name, client, files from vorn.who_changed(now() - interval '1 hour', now(), '/volume1/photo')",
}


def tell(fleet):
    """alice has plan.ods open on alpha and closes it, bob changes photos on beta; budget.ods stays open on both.
    Gives the moment when plan.ods was open."""
    photo = write_file("/root/photo", os.urandom(4096))
    fleet.run_client("alpha", "alice", "projects", f"put {photo} x/plan.ods", f"put {photo} x/budget.ods")
    fleet.run_client("beta", "bob", "projects", f"put {photo} x/budget.ods")
    reader = fleet.client("alpha", "alice", "projects")
    hold(reader, "x/plan.ods")
    wait_until(lambda: open_on("alpha", "/volume1/projects/x/plan.ods"), "plan.ods to be known as open")
    moment = datetime.now(timezone.utc)
    stop(reader)
    wait_until(lambda: not open_on("alpha", "/volume1/projects/x/plan.ods"), "plan.ods to be known as closed")
    # It stays, so that its host can be asked who it is: nobody reads what it gets in the end.
    os.mkfifo("/root/unread")
    writer = fleet.client("beta", "bob", "photo", "-c", ";".join(
        [f"put {photo} {number}.jpg" for number in range(PHOTOS)] + ["get album.txt /root/unread"]))
    wait_until(lambda: changed_files("/volume1/photo") == PHOTOS, "the photos to be known as changed")
    stop(writer)
    for node, user in (("alpha", "alice"), ("beta", "bob")):
        hold(fleet.stays(node, user, "projects"), "x/budget.ods")
        wait_until(lambda node=node: open_on(node, "/volume1/projects/x/budget.ods"), "budget.ods to be known as open")
    return moment


def hold(client, name):
    client.stdin.write(f"open {name}\n".encode())
    client.stdin.flush()


def changed_files(folder):
    return sum(files for [files] in ask("select files from vorn.who_changed(now() - interval '1 hour', now(), %s)", folder))


def open_on(node, path):
    return ask("select 1 from vorn.open_now where node = %s and path = %s", node, path)
