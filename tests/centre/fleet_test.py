"""From clients of three hosts to the answers of the centre, through every part."""

import unittest

import fleet_story
from centre_host import ask
from fleet import HOSTS, Fleet

fleet = None
moment = None


def setUpModule():
    global fleet, moment  # pylint: disable=global-statement
    fleet = Fleet()
    unittest.addModuleCleanup(fleet.stop)
    moment = fleet_story.tell(fleet)


class Questions(unittest.TestCase):
    def answers(self):
        return [ask(query.format(moment=moment.isoformat())) for query in fleet_story.QUESTIONS.values()]

    def test_have_their_answers(self):
        has, had, top, changed = self.answers()
        self.assertEqual(has, [("alpha", "alice", HOSTS["alpha"], "/volume1/projects/x/budget.ods"),
                               ("beta", "bob", HOSTS["beta"], "/volume1/projects/x/budget.ods")])
        self.assertEqual(had, [("alpha", "alice", HOSTS["alpha"], True)])
        self.assertEqual([row[:2] for row in top], [("bob", fleet_story.PHOTOS + 1)])
        self.assertEqual(changed, [("beta", "bob", HOSTS["beta"], fleet_story.PHOTOS)])

    def test_of_the_present_are_answered_by_the_hosts_too(self):
        status = {node: fleet.ask(node, "vorn-openfiles", "-q", "--strict", "--where", "share=projects").returncode
                  for node in HOSTS}
        self.assertEqual(status, {"alpha": 0, "beta": 0, "gamma": 1})

    def test_nothing_is_missing_or_refused(self):
        self.assertEqual(ask("select node, state, missing, lost, refused from vorn.nodes order by node"),
                         [(node, "watching", 0, 0, 0) for node in HOSTS])
