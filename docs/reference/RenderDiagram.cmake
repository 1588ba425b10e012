# cmake -D DOT=… -D SOURCE=….dot -D RESULT=….svg -P RenderDiagram.cmake
#
# Draws a diagram that turns its colours round where the reader prefers a dark page.

execute_process(COMMAND ${DOT} -Tsvg ${SOURCE} OUTPUT_VARIABLE svg COMMAND_ERROR_IS_FATAL ANY)
set(dark [[<style>
@media (prefers-color-scheme: dark) {
  text, polygon[fill="black"], ellipse[fill="black"] { fill: #e6e6e6 }
  [stroke="black"] { stroke: #e6e6e6 }
}
</style>
]])
string(REPLACE [[fill="white" stroke="transparent"]] [[fill="none" stroke="none"]] svg "${svg}")
string(REPLACE [[<g id="graph0"]] "${dark}<g id=\"graph0\"" svg "${svg}")
file(WRITE ${RESULT} "${svg}")
