// The functions that compiled JSX calls. The build injects them into every file.
export { Fragment, h } from 'preact';
