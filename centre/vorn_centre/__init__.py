"""The loader of the centre: events of many hosts, from their journals into PostgreSQL."""
