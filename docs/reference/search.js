// Opened as files, the frame of the results must not reach into its page: it sends messages.
addEventListener("message", (event) => {
  if (event.data === "close_results") searchBox.CloseResultsWindow();
  if (event.data === "focus_search") document.getElementById("MSearchField").focus();
});
