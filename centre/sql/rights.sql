-- The loader fills tables, readers ask views and questions, and nobody else does anything.

revoke all on schema vorn, vorn_data from public;
revoke all on all functions in schema vorn, vorn_data from public;

grant usage on schema vorn_data, vorn to "vorn-openfiles-load";
grant select, insert, update, delete on all tables in schema vorn_data to "vorn-openfiles-load";
grant execute on all functions in schema vorn_data to "vorn-openfiles-load";
grant select on all tables in schema vorn to "vorn-openfiles-load";

grant usage on schema vorn to vorn_reader;
grant select on all tables in schema vorn to vorn_reader;
grant execute on all functions in schema vorn to vorn_reader;
